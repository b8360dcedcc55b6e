#include "shell/filterline/ui/filter_edit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTextCharFormat>

#include "where/text/where_parser.h"

FilterEdit::FilterEdit(QWidget* parent) : QLineEdit(parent) {
  setMaxLength(static_cast<int>(kWhereTextMax));
}

QColor FilterEdit::ErrorColor(const QColor& ground) {
  return ground.lightness() < 128 ? QColor(0xff, 0x7b, 0x72) : QColor(0xc4, 0x1e, 0x1e);
}

// An edit has no formats of its own. It draws those of an input method, by their distance to the
// cursor, until it is told other ones.
void FilterEdit::Underline(int from, int length) {
  QList<QInputMethodEvent::Attribute> attributes;
  if (length > 0) {
    QTextCharFormat format;
    format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    format.setUnderlineColor(ErrorColor(palette().color(QPalette::Base)));
    attributes.append(QInputMethodEvent::Attribute(QInputMethodEvent::TextFormat,
                                                   from - cursorPosition(), length, format));
  }
  QInputMethodEvent formats(QString(), attributes);
  QLineEdit::inputMethodEvent(&formats);
}

// Tab would otherwise move the focus before the edit sees it.
bool FilterEdit::event(QEvent* event) {
  if (event->type() == QEvent::KeyPress && m_onKey &&
      m_onKey(*static_cast<const QKeyEvent*>(event))) {
    event->accept();
    return true;
  }
  return QLineEdit::event(event);
}

void FilterEdit::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  if (m_onLeft) m_onLeft();
}
