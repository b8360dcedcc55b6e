#include "docview/ui/qt_message_box.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <algorithm>

namespace {

constexpr int kTitleButtonsPx = 110;  // beside the title, with the window's icon
constexpr int kCharsMin = 40;         // however short the text

QMessageBox::Icon IconOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::None:
      return QMessageBox::NoIcon;
    case BoxIcon::Stop:
      return QMessageBox::Critical;
    case BoxIcon::Question:
      return QMessageBox::Question;
    case BoxIcon::Warning:
      return QMessageBox::Warning;
    case BoxIcon::Information:
      return QMessageBox::Information;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButton ButtonOf(BoxAnswer answer) {
  switch (answer) {
    case BoxAnswer::Ok:
      return QMessageBox::Ok;
    case BoxAnswer::Cancel:
      return QMessageBox::Cancel;
    case BoxAnswer::Yes:
      return QMessageBox::Yes;
    case BoxAnswer::No:
      return QMessageBox::No;
  }
  return QMessageBox::NoButton;
}

QMessageBox::StandardButtons ButtonsOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::Ok:
      return QMessageBox::Ok;
    case BoxButtons::OkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case BoxButtons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case BoxButtons::YesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

}  // namespace

QtMessageBox::QtMessageBox(const MessageBoxRequest& request, QWidget* parent)
    : QMessageBox(IconOf(request.icon), QString::fromStdString(request.caption),
                  QString::fromStdString(request.text), ButtonsOf(request.buttons), parent),
      m_buttons(request.buttons) {
  setTextFormat(Qt::PlainText);
  const bool hasYes = MustAnswer() || m_buttons == BoxButtons::YesNoCancel;
  setDefaultButton(request.preferred ? ButtonOf(*request.preferred)
                   : hasYes          ? QMessageBox::Yes
                                     : QMessageBox::Ok);
  MakeRoomForTitle();
}

// The library makes a box as wide as its text: a box with two words would be very narrow, and the
// window manager would cut its title.
void QtMessageBox::MakeRoomForTitle() {
  auto* const grid = qobject_cast<QGridLayout*>(layout());
  if (!grid) return;
  QFont title = font();
  title.setBold(true);
  const int width = std::max(QFontMetrics(title).horizontalAdvance(windowTitle()) + kTitleButtonsPx,
                             fontMetrics().averageCharWidth() * kCharsMin);
  grid->addItem(new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                grid->rowCount(), 0, 1, grid->columnCount());
}

BoxAnswer QtMessageBox::Answer() const {
  switch (const QAbstractButton* clicked = clickedButton();
          clicked ? standardButton(const_cast<QAbstractButton*>(clicked)) : NoButton) {
    case QMessageBox::Ok:
      return BoxAnswer::Ok;
    case QMessageBox::Yes:
      return BoxAnswer::Yes;
    case QMessageBox::No:
      return BoxAnswer::No;
    case QMessageBox::Cancel:
      return BoxAnswer::Cancel;
    default:
      break;
  }
  return Unanswered(m_buttons);
}

BoxAnswer QtMessageBox::Unanswered(BoxButtons buttons) {
  if (buttons == BoxButtons::Ok) return BoxAnswer::Ok;
  return buttons == BoxButtons::YesNo ? BoxAnswer::No : BoxAnswer::Cancel;
}

void QtMessageBox::closeEvent(QCloseEvent* event) {
  if (MustAnswer())
    event->ignore();
  else
    QMessageBox::closeEvent(event);
}

void QtMessageBox::keyPressEvent(QKeyEvent* event) {
  if (MustAnswer() && event->matches(QKeySequence::Cancel))
    event->accept();
  else
    QMessageBox::keyPressEvent(event);
}
