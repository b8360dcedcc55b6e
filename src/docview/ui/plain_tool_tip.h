// A tool tip that shows a text as it is, in lines of up to 60 letters. A tool tip of Qt takes
// whatever looks like markup for markup, and a name out of a file may say "<img src=...>"; left to
// itself it breaks lines where they are a third of that long.
#pragma once

#include <QString>
#include <QWidget>

// The text in lines that break behind a blank, else behind a slash, else anywhere.
QString InLinesOf(const QString& text, int letters);

// Markup only where the text would be taken for it.
QString PlainToolTip(const QString& text);

// Gives the widget that tool tip, and the text as what a screen reader describes it by: without a
// description of its own a widget is described by its tool tip, markup and line ends and all.
inline void SetPlainToolTip(QWidget& widget, const QString& text) {
  widget.setToolTip(PlainToolTip(text));
  widget.setAccessibleDescription(text);
}
