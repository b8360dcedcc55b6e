// A tool tip that shows a text unchanged, in lines of up to 60 letters. A tool tip of Qt interprets
// text that looks like markup, and a name from a file may be "<img src=...>". By itself it also
// breaks lines at a third of that length.
#pragma once

#include <QString>
#include <QWidget>

// The text in lines that break after a blank, else after a slash, else anywhere.
QString InLinesOf(const QString& text, int letters);

// Adds markup only if the text would be taken for markup.
QString PlainToolTip(const QString& text);

// Sets the widget's tool tip, and the text as its accessible description. Without a description of
// its own a screen reader would read the tool tip, with markup and line ends.
inline void SetPlainToolTip(QWidget& widget, const QString& text) {
  widget.setToolTip(PlainToolTip(text));
  widget.setAccessibleDescription(text);
}
