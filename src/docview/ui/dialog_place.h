// The position and the size of a dialog.
//
// A dialog opens where the user left it. A dialog that was never moved opens beside the focused
// row, which it is usually about. No dialog is larger than its screen: if it cannot become small
// enough it scrolls, except for its last row of buttons.
//
// Owner    Borrows the dialog and the stored places, which both outlive it.
// Threads  Interface thread.
#pragma once

#include <QDialog>
#include <QRect>
#include <optional>
#include <string>

// Stores the places between runs of the program.
class DialogPlaces {
 public:
  virtual ~DialogPlaces() = default;
  // Screen position of the frame, inner size.
  virtual std::optional<QRect> PlaceOf(const std::string& dialog) = 0;
  virtual void Keep(const std::string& dialog, const QRect& place) = 0;
};

class DialogPlace {
 public:
  explicit DialogPlace(QDialog& dialog) : m_dialog(dialog) {}
  // Without this call nothing is stored.
  void Remember(DialogPlaces* places, std::string name);

  void BeforeShow();
  void AfterShow();
  void BeforeHide();

 private:
  void TakeFirstPlace();
  bool ParentHasNoPlace() const;
  void CentreOverParent();
  QRect Place() const { return {m_dialog.pos(), m_dialog.size()}; }

  QDialog& m_dialog;
  DialogPlaces* m_places = nullptr;
  std::string m_name;
  std::optional<QRect> m_shown;  // as it opened
  int m_early = 0;  // it opened before its parent had a place: how often that is looked for
};

// The focused row of the control with the focus, in screen coordinates; empty when there is none.
QRect FocusedRowOnScreen();
// A position at which a window of this size hides no part of `row`: `wanted` if possible, else
// below, above, right or left of the row, inside `room`.
QPoint BesideRow(const QRect& wanted, const QRect& row, const QRect& room);
// Puts the content of the dialog into a scroll area.
void MakeScrollable(QDialog& dialog);
