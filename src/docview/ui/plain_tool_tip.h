// A tool tip that shows a text as it is, and wraps a long one. A tool tip of Qt takes whatever
// looks like markup for markup, and a name out of a file may say "<img src=...>".
#pragma once

#include <QString>

inline QString PlainToolTip(const QString& text) {
  if (text.isEmpty()) return text;
  return "<qt>" + text.toHtmlEscaped().replace('\n', "<br>") + "</qt>";
}
