// The box "Locating source...": a window beside the others, with a loop of its own.
//
// Threads  Interface thread.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "listview/source/locate_wait.h"

class LocateWaitFace final : public QtDialogFace {
 public:
  LocateWaitFace(LocateWait& dialog, QWidget* parent);

  // Blocks no window. Ends with the dialog, or with the program.
  int exec() override;
};
