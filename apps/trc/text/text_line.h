// Lines of aligned cells.
#pragma once

#include <string>
#include <string_view>

#include "listview/cells/cell_text.h"
#include "terminal/output.h"

// A longer cell shifts only the rest of its own line to the right.
constexpr std::size_t kColumnWidthMax = 200;
// Where traces are left out between groups of neighbours.
constexpr std::string_view kGap = "--";

// What tells a terminal the colour of the severity: warnings and errors have one that stands out
// from white and from black, and is none of the sixteen that users choose themselves.
std::string_view SeverityColour(const TraceEvent_i& trace);

// The text of a cell on a terminal. A severity is a word.
std::string VisibleCell(Column column, const TraceEvent_i& trace, const TraceEvent_i* previous,
                        const NameMap& names, bool utc);

// Writes cells side by side, without blanks at the end of a line.
class LineWriter {
 public:
  explicit LineWriter(Output& output) : m_output(output) {}

  // `colour`: what a terminal is told before the text; empty: nothing.
  void Add(std::string_view text, std::size_t width, std::size_t columnWidth, bool right,
           std::string_view colour = {}) {
    const std::size_t room = columnWidth > width ? columnWidth - width : 0;
    if (right) m_blanks += room;
    if (!text.empty()) {
      m_output.Buffer().append(m_blanks, ' ').append(colour).append(text);
      if (!colour.empty()) m_output.Buffer().append(kPlain);
      m_blanks = 0;
    }
    m_blanks += (right ? 0 : room) + (text.empty() ? width : 0) + kGapBlanks;
  }
  // Before the first cell: what a terminal is told for the whole line; empty: nothing.
  void Begin(std::string_view colour) {
    m_output.Buffer().append(colour);
    m_coloured = !colour.empty();
  }
  // A line of its own, instead of cells.
  bool Line(std::string_view text) {
    m_output.Buffer().append(text);
    return m_output.EndLine();
  }
  bool End() {
    m_blanks = 0;
    if (m_coloured) m_output.Buffer().append(kPlain);
    m_coloured = false;
    return m_output.EndLine();
  }

 private:
  static constexpr std::size_t kGapBlanks = 2;
  static constexpr std::string_view kPlain = "\x1b[0m";

  Output& m_output;
  std::size_t m_blanks = 0;  // to be written before the next text
  bool m_coloured = false;   // the line
};
