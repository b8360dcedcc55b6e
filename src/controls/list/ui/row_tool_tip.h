// The tool tip of a cell: its text if that is cut, and the note of its row.
#pragma once

class QHelpEvent;
class QtRowList;
class RowPainter;

// Shows it, or hides the current one if the cell under the mouse needs none.
void ShowRowToolTip(QtRowList& list, const RowPainter& painter, const QHelpEvent& event);
