// The window of a CDialog: base of all dialog faces.
//
// A face copies the dialog's members into widgets, calls the dialog's operations for the actions of
// the user, and closes when the dialog has ended. OK and Enter call OnOK; Cancel, Esc and the
// window's close button call OnCancel.
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

  // Closes the window if the dialog has ended. The host calls it after every call and tick, because
  // something else than the window may end a dialog.
  void CloseIfEnded();
  // The dialog will be destroyed: hides the window and ignores later events.
  void Detach();

  // Sends the help command to the main window.
  void AskForHelp();

  // Opens at the stored place of the dialog of this name.
  void RememberPlace(DialogPlaces* places, std::string name);
  void setVisible(bool visible) override;

  // Esc and Enter, as in QDialog.
  void accept() override;
  void reject() override;

 protected:
  // Calls the dialog unless it is destroyed, then closes the window if that ended the dialog.
  void Forward(const std::function<void()>& call);
  // The action of OK; a face with a data exchange does the exchange first.
  virtual void OnAccept() { m_dialog->OnOK(); }
  void keyPressEvent(QKeyEvent* event) override;

 private:
  CDialog* m_dialog;  // null when detached
  DialogPlace m_place;
};
