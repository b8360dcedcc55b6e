// The window of the box of a long search.
//
// Threads  Interface thread.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "tree/find/search_box.h"

class SearchBoxFace final : public QtDialogFace {
 public:
  SearchBoxFace(CSearchBox& dialog, QWidget* parent);
};
