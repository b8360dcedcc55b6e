// The places of dialogs in the settings store.
//
// Shape    A text "x y width height" under the dialog's name, below the key "Dialogs" beside the
//          windows' sizes; device-independent pixels.
// Errors   A value that is not a place reads as none.
// Threads  Interface thread.
#pragma once

#include "docview/ui/dialog_place.h"

class StoredPlaces final : public DialogPlaces {
 public:
  std::optional<QRect> PlaceOf(const std::string& dialog) override;
  void Keep(const std::string& dialog, const QRect& place) override;
};
