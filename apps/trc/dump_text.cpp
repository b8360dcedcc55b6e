#include <algorithm>
#include <memory>
#include <optional>

#include "dump.h"
#include "interrupt.h"
#include "listview/columns/columns.h"
#include "text_line.h"
#include "visible_text.h"

namespace {

struct Cell {
  std::string text;
  std::size_t width;
};

// Where a cell depends on one 16-bit number alone, that number.
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
      return trace.GetPidId();
    case Column::Tid:
      return trace.GetTidId();
    default:
      return std::nullopt;
  }
}

// The cells of one column. Those of names are made once per name.
class CellColumn {
 public:
  CellColumn(Column column, const DumpRange& range, bool utc)
      : m_info(kColumns[static_cast<std::size_t>(column)]), m_range(range), m_utc(utc) {}

  const char* Header() const { return m_info.header; }
  bool AlignsRight() const { return m_info.align == ColumnAlign::Right; }
  // Good until the next call.
  const Cell& At(std::size_t row) {
    const TraceEvent_i& trace = m_range.traces.At(row);
    const std::optional<std::uint16_t> key = KeyOf(m_info.column, trace);
    if (!key) {
      m_last = Make(row, trace);
      return m_last;
    }
    if (m_known.empty()) m_known.resize(65536);
    std::unique_ptr<Cell>& known = m_known[*key];
    if (!known) known = std::make_unique<Cell>(Make(row, trace));
    return *known;
  }

 private:
  Cell Make(std::size_t row, const TraceEvent_i& trace) const {
    const TraceEvent_i* const previous = row == 0 ? nullptr : &m_range.traces.At(row - 1);
    std::string text = VisibleCell(m_info.column, trace, previous, m_range.Names(), m_utc);
    const std::size_t width = ScreenWidth(text);
    return {std::move(text), width};
  }

  const ColumnInfo& m_info;
  const DumpRange& m_range;
  bool m_utc;
  std::vector<std::unique_ptr<Cell>> m_known;  // by key
  Cell m_last;
};

class TextDump {
 public:
  TextDump(const DumpRange& range, const DumpOptions& options, Output& output,
           ProgressLine& progress)
      : m_range(range), m_progress(progress), m_line(output) {
    m_columns.reserve(options.columns.size());
    for (const Column column : options.columns) m_columns.emplace_back(column, range, options.utc);
  }

  void Run() {
    if (!Measure() || !WriteHeader()) return;
    for (std::size_t i = m_range.from; i < m_range.to; ++i) {
      for (std::size_t c = 0; c < m_columns.size(); ++c) {
        const Cell& cell = m_columns[c].At(i);
        m_line.Add(cell.text, cell.width, m_widths[c], m_columns[c].AlignsRight());
      }
      if (!m_line.End()) return;
      ShowProgress("Writing...", i);
    }
  }

 private:
  // Finds the widths of the columns that something is aligned behind. False when interrupted.
  bool Measure() {
    for (std::size_t c = 0; c < m_columns.size(); ++c) {
      std::size_t width = ScreenWidth(m_columns[c].Header());
      const bool needed = c + 1 < m_columns.size() || m_columns[c].AlignsRight();
      for (std::size_t i = m_range.from; needed && i < m_range.to; ++i) {
        width = std::max(width, std::min(m_columns[c].At(i).width, kMostColumnWidth));
        ShowProgress("Measuring columns...", i);
        if (Interrupted()) return false;
      }
      m_widths.push_back(width);
    }
    return true;
  }

  bool WriteHeader() {
    for (std::size_t c = 0; c < m_columns.size(); ++c) {
      const std::string_view header = m_columns[c].Header();
      m_line.Add(header, header.size(), m_widths[c], m_columns[c].AlignsRight());
    }
    return m_line.End();
  }

  void ShowProgress(std::string_view caption, std::size_t index) {
    const std::size_t done = index - m_range.from;
    if (done % kTracesPerLook == 0) m_progress.Show(caption, done, m_range.to - m_range.from);
  }

  const DumpRange& m_range;
  ProgressLine& m_progress;
  LineWriter m_line;
  std::vector<CellColumn> m_columns;
  std::vector<std::size_t> m_widths;
};

}  // namespace

void DumpAsText(const DumpRange& range, const DumpOptions& options, Output& output,
                ProgressLine& progress) {
  TextDump(range, options, output, progress).Run();
}
