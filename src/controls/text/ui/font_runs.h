// A line in the runs in which it is drawn. Beside Chinese, Japanese and Korean letters the library
// takes digits and blanks from the font of those letters; in a run of its own each of them keeps
// the list's font, its width and its base line.
//
// Cost     A line without such letters is one run, and is not copied.
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QString>
#include <vector>

// Where each run ends, ascending; the last is the line's end. A line with right-to-left letters is
// one run, because their order needs the whole line.
std::vector<qsizetype> FontRuns(const QString& line);
// As it is drawn in its runs.
int LineWidth(const QFontMetrics& metrics, const QString& line);
// Cut with dots at its end where it is wider than the room.
QString ElidedLine(const QFontMetrics& metrics, const QString& line, int roomPx);
