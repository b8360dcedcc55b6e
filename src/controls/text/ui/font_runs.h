// Splits a line into the runs in which it is drawn. Next to Chinese, Japanese and Korean letters
// the library takes digits and blanks from the font of those letters. In a run of their own they
// keep the list's font, with its width and base line.
//
// Cost     A line without such letters is one run, and is not copied.
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QString>
#include <vector>

// The end of each run, ascending; the last is the line's end. A line with right-to-left letters is
// one run, because their order needs the whole line.
std::vector<qsizetype> FontRuns(const QString& line);
// The width of the line drawn in its runs.
int LineWidth(const QFontMetrics& metrics, const QString& line);
// Cut with dots at its end if it is wider than the room.
QString ElidedLine(const QFontMetrics& metrics, const QString& line, int roomPx);
