// The find box of a text window: stays open while the user goes from hit to hit.
//
// Owner    The view owns it; it borrows what it calls.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>

#include "docview/dialogs/dialog.h"
#include "listview/source/rich_edit.h"

class FindTextDialog : public CDialog {
 public:
  static constexpr char kTitle[] = "Find";
  static constexpr char kNotFound[] = "Text not found.";

  // Shows the box with `start`.
  FindTextDialog(Host& host, RichEditFind start, std::function<void(const RichEditFind&)> findNext);

  bool MayFind() const { return !m_find.text.empty(); }
  // "Find Next", the default button: the box stays.
  void OnOK() override;

  RichEditFind m_find;  // as the widgets have it

 private:
  std::function<void(const RichEditFind&)> m_findNext;
  std::unique_ptr<DialogFace> m_face;
};
