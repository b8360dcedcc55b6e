#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

#include "commands/columns_option.h"
#include "commands/dump.h"
#include "listview/columns/time_columns.h"
#include "text/line_colours.h"
#include "text/text_line.h"
#include "text/time_values.h"
#include "text/visible_text.h"

namespace {

struct Cell {
  std::string text;
  std::size_t width;
};

// The 16-bit number on which alone a cell depends, if there is one.
std::optional<std::uint16_t> KeyOf(Column column, const TraceEvent_i& trace) {
  switch (column) {
    case Column::Sev:
    case Column::Attributes:
      return static_cast<std::uint16_t>(trace.GetAttributes());
    case Column::Machine:
      return trace.GetMachineId();
    case Column::Application:
      return trace.GetAppId();
    case Column::Component:
      return trace.GetComponentId();
    case Column::Category:
      return trace.GetCategoryId();
    case Column::Pid:
    case Column::Account:
      return trace.GetPidId();
    case Column::Tid:
      return trace.GetTidId();
    default:
      return std::nullopt;
  }
}

// The cells of one column. Cells with a name are made once per name.
class CellColumn {
 public:
  // `times`: of the columns of times, which have learned the file.
  CellColumn(Column column, const DumpRange& range, bool utc, TimeValues& times)
      : m_info(InfoOf(column)), m_range(range), m_times(times), m_utc(utc) {}

  const char* Header() const { return m_info.header; }
  bool IsSeverity() const { return m_info.column == Column::Sev; }
  bool AlignsRight() const { return m_info.align == ColumnAlign::Right; }
  // Valid until the next call.
  const Cell& At(std::size_t row) {
    const TraceEvent_i& trace = m_range.traces.At(row);
    const std::optional<std::uint16_t> key = KeyOf(m_info.column, trace);
    if (!key) {
      m_last = Make(row, trace);
      return m_last;
    }
    if (m_known.empty()) m_known.resize(kNameIds);
    std::unique_ptr<Cell>& known = m_known[*key];
    if (!known) known = std::make_unique<Cell>(Make(row, trace));
    return *known;
  }

 private:
  Cell Make(std::size_t row, const TraceEvent_i& trace) const {
    const TraceEvent_i* const previous = row == 0 ? nullptr : &m_range.traces.At(row - 1);
    std::string text =
        IsTimeColumn(m_info.column)
            ? m_times.Cell(m_info.column, m_range.traces.PlaceOf(row), trace, previous)
            : VisibleCell(m_info.column, trace, previous, m_range.Names(), m_utc);
    const std::size_t width = ScreenWidth(text);
    return {std::move(text), width};
  }

  const ColumnInfo& m_info;
  const DumpRange& m_range;
  TimeValues& m_times;
  bool m_utc;
  std::vector<std::unique_ptr<Cell>> m_known;  // by key
  Cell m_last;
};

const TraceEvent_i* ReferenceOf(const DumpRange& range, const TraceOptions& options) {
  return options.sinceRow ? range.traces.Document().m_traces[*options.sinceRow] : nullptr;
}

class TextDump {
 public:
  TextDump(const DumpRange& range, const DumpOptions& options, Output& output,
           ProgressLine& progress)
      : m_range(range),
        m_progress(progress),
        m_line(output),
        m_coloured(options.coloured),
        m_times(options.traces.utc, ReferenceOf(range, options.traces)) {
    const std::vector<Column> columns = options.traces.columns.value_or(DefaultColumns());
    m_columns.reserve(columns.size());
    for (const Column column : columns)
      m_columns.emplace_back(column, range, options.traces.utc, m_times);
    if (std::ranges::count(columns, Column::WallTime) > 0)
      m_times.Moments().Learn(range.traces.Document().m_traces);
    if (!options.colours) return;
    m_colours.emplace(options.colours, range.Names());
    m_clock = FilterPass::ClockOf(range.traces.Document(), options.traces.utc);
  }

  void Run() {
    Measure();
    if (!WriteHeader()) return;
    for (std::size_t i = m_range.from; m_range.Has(i); ++i) {
      if (m_range.IsGapBefore(i) && !m_line.Line(kGap)) return;
      m_line.Begin(ColourOfLine(i));
      for (std::size_t c = 0; c < m_columns.size(); ++c) {
        const Cell& cell = m_columns[c].At(i);
        Widen(c, cell);
        m_line.Add(cell.text, cell.width, m_widths[c], m_columns[c].AlignsRight(), ColourOf(c, i));
      }
      if (!m_line.End()) return;
      if ((i - m_range.from) % kTracesPerLook == 0)
        m_progress.Show("Writing...", m_range.traces.PlaceOf(i), m_range.traces.All());
    }
  }

 private:
  using Clock = std::chrono::steady_clock;
  // How many rows are measured before the first is written, and the time limit for that, because
  // the user waits for it. A later, wider cell makes its column wider from there on.
  static constexpr std::size_t kMeasuredRows = 1000, kRowsPerLook = 64;
  static constexpr std::chrono::milliseconds kMeasuringTime{15};

  void Measure() {
    for (const CellColumn& column : m_columns) m_widths.push_back(ScreenWidth(column.Header()));
    if (!m_range.Has(m_range.from)) return;
    const Clock::time_point until = Clock::now() + kMeasuringTime;
    const std::size_t end = m_range.from + kMeasuredRows;
    for (std::size_t i = m_range.from; i < end && m_range.Has(i); ++i) {
      for (std::size_t c = 0; c < m_columns.size(); ++c)
        if (NeedsWidth(c)) Widen(c, m_columns[c].At(i));
      // If rows are the result of a search, the next one may take long.
      if ((m_range.traces.IsSearched() || (i + 1 - m_range.from) % kRowsPerLook == 0) &&
          Clock::now() > until)
        return;
    }
  }
  // Is there an aligned column after it?
  bool NeedsWidth(std::size_t c) const {
    return c + 1 < m_columns.size() || m_columns[c].AlignsRight();
  }
  // The trace before is that of the file, whether it is shown or not.
  std::string_view ColourOfLine(std::size_t row) {
    if (!m_colours) return {};
    const std::size_t place = m_range.traces.PlaceOf(row);
    const TraceList_t& all = m_range.traces.Document().m_traces;
    const WherePrevious before = place == 0 ? WherePrevious() : PreviousOf(*all[place - 1]);
    const std::string_view colour = m_colours->Of(m_range.traces.At(row), before, m_clock);
    m_lineColoured = !colour.empty();
    return colour;
  }
  std::string_view ColourOf(std::size_t c, std::size_t row) const {
    const bool coloured = m_coloured && !m_lineColoured && m_columns[c].IsSeverity();
    return coloured ? SeverityColour(m_range.traces.At(row)) : std::string_view();
  }
  void Widen(std::size_t c, const Cell& cell) {
    m_widths[c] = std::max(m_widths[c], std::min(cell.width, kColumnWidthMax));
  }

  bool WriteHeader() {
    for (std::size_t c = 0; c < m_columns.size(); ++c) {
      const std::string_view header = m_columns[c].Header();
      m_line.Add(header, header.size(), m_widths[c], m_columns[c].AlignsRight());
    }
    return m_line.End();
  }

  const DumpRange& m_range;
  ProgressLine& m_progress;
  LineWriter m_line;
  const bool m_coloured;
  std::optional<LineColours> m_colours;
  WhereClock m_clock;
  bool m_lineColoured = false;
  TimeValues m_times;
  std::vector<CellColumn> m_columns;
  std::vector<std::size_t> m_widths;
};

}  // namespace

void DumpAsText(const DumpRange& range, const DumpOptions& options, Output& output,
                ProgressLine& progress) {
  TextDump(range, options, output, progress).Run();
}
