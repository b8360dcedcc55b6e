// The view of a source file: fixed font, tab stops, the caret on the requested line, which is
// marked beside its number.
//
// Threads  Interface thread.
#pragma once

#include "listview/source/rich_edit_view.h"

// In the hint of an UpdateAllViews without sender and object: go to the line in the other bits.
constexpr unsigned kHintGoToLine = 0x80000000;

class CSourceView : public CRichEditView {
 public:
  using CRichEditView::CRichEditView;

  void OnInitialUpdate() override;
  // Clears both panes of the main window: a source has neither rows nor a filter.
  void OnActivateView(bool activate, CView* activated, CView* deactivated) override;
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override;
};
