// The tool tip of a tree: the note of the item below the pointer.
//
// Threads  Interface thread.
#pragma once

class QHelpEvent;
class QtTreeControl;

// Hides what is shown where there is no note.
void ShowTreeToolTip(QtTreeControl& tree, const QHelpEvent& event);
