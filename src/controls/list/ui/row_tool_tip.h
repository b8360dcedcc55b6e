// The tool tip of a cell whose text does not show whole.
#pragma once

class QHelpEvent;
class QtRowList;
class RowPainter;

// Shows it, or takes down what is shown when the cell under the mouse needs none.
void ShowRowToolTip(QtRowList& list, const RowPainter& painter, const QHelpEvent& event);
