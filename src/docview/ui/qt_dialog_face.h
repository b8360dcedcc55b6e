// The window of a CDialog: base of all dialog faces.
//
// A face copies the dialog's members into widgets, calls the dialog's operations for what the user
// does, and closes when the dialog has ended. OK and Enter reach the dialog as OnOK; Cancel, Esc
// and the window's own close button as OnCancel.
//
// Owner    Borrows the dialog, which outlives it or calls Detach.
// Threads  Interface thread.
#pragma once

#include <QDialog>
#include <functional>

#include "docview/dialogs/dialog.h"
#include "docview/ui/dialog_place.h"

class QtDialogFace : public QDialog {
 public:
  QtDialogFace(CDialog& dialog, QWidget* parent);

  // Copies the dialog's state into the widgets.
  virtual void UpdateData() {}

  // Closes the window if the dialog has ended. The host asks behind every call and tick, because a
  // dialog may be ended by something else than its window.
  void CloseIfEnded();
  // The dialog is about to go: the window hides, and what still reaches it does nothing.
  void Detach();

  // Comes up where the dialog of this name was left.
  void RememberPlace(DialogPlaces* places, std::string name);
  void setVisible(bool visible) override;

  // Esc and Enter as QDialog has them.
  void accept() override;
  void reject() override;

 protected:
  // Calls the dialog unless it is gone, then closes if that ended it.
  void Forward(const std::function<void()>& call);
  // What OK does; a face with a data exchange does that first.
  virtual void OnAccept() { m_dialog->OnOK(); }
  // Sends the help command to the main window.
  void AskForHelp();
  void keyPressEvent(QKeyEvent* event) override;

 private:
  CDialog* m_dialog;  // null when detached
  DialogPlace m_place;
};
