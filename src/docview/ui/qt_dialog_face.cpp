#include "docview/ui/qt_dialog_face.h"

#include <QKeyEvent>
#include <utility>

#include "docview/commands/command_ids.h"
#include "docview/wnd.h"

QtDialogFace::QtDialogFace(CDialog& dialog, QWidget* parent)
    : QDialog(parent), m_dialog(&dialog), m_place(*this) {
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

void QtDialogFace::CloseIfEnded() {
  if (m_dialog && m_dialog->Ended()) done(m_dialog->Result());
}

void QtDialogFace::Detach() {
  m_dialog = nullptr;
  hide();
}

void QtDialogFace::RememberPlace(DialogPlaces* places, std::string name) {
  m_place.Remember(places, std::move(name));
}

void QtDialogFace::setVisible(bool visible) {
  if (visible)
    m_place.BeforeShow();
  else
    m_place.BeforeHide();
  QDialog::setVisible(visible);
  if (visible) m_place.AfterShow();
}

void QtDialogFace::Forward(const std::function<void()>& call) {
  if (!m_dialog) return;
  call();
  CloseIfEnded();
}

void QtDialogFace::accept() {
  Forward([this] { OnAccept(); });
}

void QtDialogFace::reject() {
  Forward([this] { m_dialog->OnCancel(); });
}

void QtDialogFace::AskForHelp() {
  Forward([this] {
    if (CWnd* main = m_dialog->GetHost().MainWindow()) main->OnCommand(ID_HELP);
  });
}

void QtDialogFace::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1)
    AskForHelp();
  else
    QDialog::keyPressEvent(event);
}
