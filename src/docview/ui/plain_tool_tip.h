// A tool tip that shows a text as it is, in lines of up to 60 letters. A tool tip of Qt takes
// whatever looks like markup for markup, and a name out of a file may say "<img src=...>"; left to
// itself it breaks lines where they are a third of that long.
#pragma once

#include <QString>

// The text in lines that break behind a blank, else behind a slash, else anywhere.
QString InLinesOf(const QString& text, int letters);

// Markup only where the text would be taken for it.
QString PlainToolTip(const QString& text);
