// The tool tip of a cell whose text is cut.
#pragma once

class QHelpEvent;
class QtRowList;
class RowPainter;

// Shows it, or hides the current one if the cell under the mouse needs none.
void ShowRowToolTip(QtRowList& list, const RowPainter& painter, const QHelpEvent& event);
