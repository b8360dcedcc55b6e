#include "listview/source/source_view.h"

#include "documents/trace_panes.h"

namespace {

constexpr char kFace[] = "Courier New";
constexpr int kTabCells = 8;

}  // namespace

void CSourceView::OnInitialUpdate() {
  CRichEditView::OnInitialUpdate();
  Edit().SetFormat({kFace, kTabCells, false});
  Edit().SetSel(-1, -1);
  Edit().SetModify(false);
}

void CSourceView::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  ReportRowCount(GetHost(), -1);
  ReportFiltered(GetHost(), -1);
  CRichEditView::OnActivateView(activate, activated, deactivated);
}

// A line after the text's end has no index: the caret stays where it was.
void CSourceView::OnUpdate(CView* sender, unsigned hint, CObject* object) {
  if (sender || object || !(hint & kHintGoToLine)) return;
  const auto line = static_cast<int>(hint & ~kHintGoToLine);
  const int index = Edit().LineIndex(line - 1);
  Edit().SetSel(index, index);
  Edit().MarkLine(line - 1);
}
