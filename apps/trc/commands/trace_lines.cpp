#include "commands/trace_lines.h"

#include <algorithm>

#include "commands/columns_option.h"
#include "listview/columns/time_columns.h"
#include "records/json/trace_json.h"
#include "text/line_colours.h"
#include "text/text_line.h"
#include "text/time_values.h"
#include "text/visible_text.h"

namespace {

class JsonLines final : public TraceLines {
 public:
  JsonLines(const NameMap& names, bool utc, bool byPlace, Output& output)
      : m_moments(utc), m_json(names, m_moments), m_byPlace(byPlace), m_output(output) {}
  bool Add(const TakenTrace& taken, const TraceEvent_i*) override {
    const std::uint64_t index = m_byPlace ? taken.place : m_index++;
    m_moments.Learn(index, *taken.trace);
    m_json.Append(m_output.Buffer(), index, *taken.trace, taken.beside);
    return m_output.EndLine();
  }
  void ForgetIds() override {
    m_moments.ForgetIds();
    m_json.ForgetIds();
  }

 private:
  TraceMoments m_moments;
  TraceJson m_json;
  const bool m_byPlace;
  Output& m_output;
  std::uint64_t m_index = 0;
};

class TextLines final : public TraceLines {
 public:
  TextLines(const NameMap& names, const TraceOptions& options, const TraceLinesWay& way,
            Output& output)
      : m_names(names),
        m_columns(options.columns.value_or(DefaultColumns())),
        m_utc(options.utc),
        m_coloured(way.coloured),
        m_rules(way.colours),
        m_times(options.utc),
        m_line(output) {
    TextLines::ForgetIds();
    for (const Column column : m_columns) m_widths.push_back(ScreenWidth(InfoOf(column).header));
  }
  bool Add(const TakenTrace& taken, const TraceEvent_i* previous) override {
    const TraceEvent_i& trace = *taken.trace;
    if (m_learns) m_times.Moments().Learn(++m_learned, trace);
    if (!m_headed && !WriteHeader(trace)) return false;
    if (taken.behindGap && !m_line.Line(kGap)) return false;
    const std::string_view ofLine = ColourOf(taken);
    m_line.Begin(ofLine);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const std::string text = CellOf(m_columns[i], trace, previous);
      const std::size_t width = ScreenWidth(text);
      m_widths[i] = std::max(m_widths[i], std::min(width, kColumnWidthMax));
      const bool coloured = m_coloured && ofLine.empty() && m_columns[i] == Column::Sev;
      m_line.Add(text, width, m_widths[i], AlignsRight(i),
                 coloured ? SeverityColour(trace) : std::string_view());
    }
    return m_line.End();
  }
  void ForgetIds() override {
    m_times.Moments().ForgetIds();
    if (m_rules) m_colours.emplace(m_rules, m_names);
  }

 private:
  std::string CellOf(Column column, const TraceEvent_i& trace, const TraceEvent_i* previous) {
    if (IsTimeColumn(column)) return m_times.Cell(column, m_learned, trace, previous);
    return VisibleCell(column, trace, previous, m_names, m_utc);
  }
  std::string_view ColourOf(const TakenTrace& taken) {
    if (!m_colours) return {};
    WhereClock clock{m_utc};
    if (m_colours->UsesEnd()) clock.end = taken.end ? taken.end : MomentOf(*taken.trace);
    return m_colours->Of(*taken.trace, taken.before, clock);
  }
  // Called with the first trace, whose cells determine the first widths.
  bool WriteHeader(const TraceEvent_i& first) {
    m_headed = true;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const Column column = m_columns[i];
      const std::string_view header = InfoOf(column).header;
      const std::size_t width = ScreenWidth(CellOf(column, first, nullptr));
      m_widths[i] = std::max(m_widths[i], std::min(width, kColumnWidthMax));
      m_line.Add(header, header.size(), m_widths[i], AlignsRight(i));
    }
    return m_line.End();
  }
  bool AlignsRight(std::size_t i) const { return InfoOf(m_columns[i]).align == ColumnAlign::Right; }

  const NameMap& m_names;
  const std::vector<Column> m_columns;
  const bool m_utc, m_coloured;
  const ColourProgramPtr m_rules;  // null: none
  TimeValues m_times;
  const bool m_learns = std::ranges::count(m_columns, Column::WallTime) > 0;
  std::uint64_t m_learned = 0;
  LineWriter m_line;
  std::optional<LineColours> m_colours;
  std::vector<std::size_t> m_widths;
  bool m_headed = false;
};

}  // namespace

std::unique_ptr<TraceLines> MakeTraceLines(const TraceLinesWay& way, const TraceOptions& options,
                                           const NameMap& names, Output& output) {
  if (way.format == DumpFormat::Jsonl)
    return std::make_unique<JsonLines>(names, options.utc, way.byPlace, output);
  return std::make_unique<TextLines>(names, options, way, output);
}
