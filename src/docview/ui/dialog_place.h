// Where a dialog stands, and how large.
//
// A dialog comes up where the person left it. One that was never moved comes up beside the row that
// has the focus, which it is mostly about. None is larger than its screen: one that cannot become
// small enough scrolls, but for its last row of buttons.
//
// Owner    Borrows the dialog and the memory of places, which both outlive it.
// Threads  Interface thread.
#pragma once

#include <QDialog>
#include <QRect>
#include <optional>
#include <string>

// Keeps the places over the runs of the program.
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
  // Without it nothing is remembered.
  void Remember(DialogPlaces* places, std::string name);

  void BeforeShow();
  void AfterShow();
  void BeforeHide();

 private:
  void TakeFirstPlace();
  QRect Place() const { return {m_dialog.pos(), m_dialog.size()}; }

  QDialog& m_dialog;
  DialogPlaces* m_places = nullptr;
  std::string m_name;
  std::optional<QRect> m_shown;  // as it came up
};

// The focused row of the control that has the focus, on the screen; empty when it has none.
QRect FocusedRowOnScreen();
// Where a window of this size hides no part of `row`: `wanted` if it can be, else below, above,
// right or left of the row, inside `room`.
QPoint BesideRow(const QRect& wanted, const QRect& row, const QRect& room);
// Puts what the dialog shows into an area that scrolls.
void MakeScrollable(QDialog& dialog);
