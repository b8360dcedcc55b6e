#include "listview/copy/copy_writer.h"

#include <algorithm>
#include <string_view>

#include "listview/columns/time_columns.h"
#include "listview/copy/clean_lines.h"
#include "listview/copy/copied_filter.h"
#include "records/json/trace_json.h"

namespace {

// A longer cell moves only the rest of its own line to the right.
constexpr std::size_t kWidthMax = 200;

std::size_t WidthOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string SafeForSheets(Column column, std::string value) {
  constexpr std::string_view kFormulas = "=+-@\t\r";
  const bool formula = !value.empty() && kFormulas.find(value[0]) != std::string_view::npos;
  if (formula && !IsNumberColumn(column)) value.insert(0, 1, '\'');
  return value;
}

class CellWriter : public CopyWriter {
 protected:
  explicit CellWriter(const CopyContext& context)
      : m_context(context), m_columns(context.traces.Columns()) {}

  // On one line.
  std::string Cell(Column column, const CopiedTrace& trace) const {
    std::string text;
    if (column == Column::Sev)
      text = SeverityWord(*trace.event);
    else if (IsTimeColumn(column))
      text = m_context.traces.FurtherText(trace, column);
    else
      text = CellText(column, *trace.event, trace.above, m_context.names, m_context.utc);
    for (char& byte : text)
      if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = ' ';
    return text;
  }

  const CopyContext m_context;
  const std::vector<Column> m_columns;
};

class TabWriter final : public CellWriter {
 public:
  explicit TabWriter(const CopyContext& context) : CellWriter(context) {}

  void Begin(std::string& out) override {
    if (!m_context.headings) return;
    Line(out, [](Column column) { return std::string(InfoOf(column).header); });
  }
  void Add(std::string& out, const CopiedTrace& trace, std::uint64_t) override {
    Line(out, [&](Column column) { return SafeForSheets(column, Cell(column, trace)); });
  }

 private:
  template <class CellOf>
  void Line(std::string& out, const CellOf& cellOf) const {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      if (i > 0) out += '\t';
      out += cellOf(m_columns[i]);
    }
    out += '\n';
  }
};

class AlignedWriter final : public CellWriter {
 public:
  explicit AlignedWriter(const CopyContext& context)
      : CellWriter(context), m_widths(m_columns.size(), 0) {
    if (!context.headings) return;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
      m_widths[i] = WidthOf(InfoOf(m_columns[i]).header);
  }

  bool NeedsMeasure() const override { return true; }
  void Measure(const CopiedTrace& trace) override {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const std::size_t width = WidthOf(Cell(m_columns[i], trace));
      m_widths[i] = std::max(m_widths[i], std::min(width, kWidthMax));
    }
  }
  void Begin(std::string& out) override {
    if (!m_context.headings) return;
    Line(out, [](Column column) { return std::string(InfoOf(column).header); });
  }
  void Add(std::string& out, const CopiedTrace& trace, std::uint64_t) override {
    Line(out, [&](Column column) { return Cell(column, trace); });
  }

 private:
  // Without blanks at its end.
  template <class CellOf>
  void Line(std::string& out, const CellOf& cellOf) const {
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const std::string cell = cellOf(m_columns[i]);
      const std::size_t width = WidthOf(cell);
      const std::size_t room = m_widths[i] > width ? m_widths[i] - width : 0;
      const bool right = InfoOf(m_columns[i]).align == ColumnAlign::Right;
      if (right) blanks += room;
      if (!cell.empty()) {
        out.append(blanks, ' ').append(cell);
        blanks = 0;
      }
      blanks += (right ? 0 : room) + 2;
    }
    out += '\n';
  }

  std::vector<std::size_t> m_widths;
};

class CsvWriter final : public CellWriter {
 public:
  explicit CsvWriter(const CopyContext& context) : CellWriter(context) {}

  bool NeedsMoments() const override { return true; }
  void Begin(std::string& out) override {
    if (!m_context.headings) return;
    WriteRfc4180Header(out, m_columns);
    out += '\n';
  }
  void Add(std::string& out, const CopiedTrace& trace, std::uint64_t place) override {
    const CleanRow row{place, *trace.event, trace.above, m_context.names, m_context.moments};
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const Column column = m_columns[i];
      if (i > 0) out += ',';
      WriteRfc4180Cell(out, SafeForSheets(column, IsTimeColumn(column) ? Further(trace, column)
                                                                       : CleanValue(column, row)));
    }
    out += "\r\n";
  }

 private:
  std::string Further(const CopiedTrace& trace, Column column) const {
    std::string text = m_context.traces.FurtherText(trace, column);
    return text == "n/a" ? std::string() : text;
  }
};

class JsonWriter final : public CopyWriter {
 public:
  explicit JsonWriter(const CopyContext& context) : m_json(context.names, context.moments) {}

  bool NeedsMoments() const override { return true; }
  void Add(std::string& out, const CopiedTrace& trace, std::uint64_t place) override {
    m_json.Append(out, place, *trace.event);
    out += '\n';
  }

 private:
  TraceJson m_json;
};

class FilterWriter final : public CopyWriter {
 public:
  void Add(std::string&, const CopiedTrace& trace, std::uint64_t) override {
    m_filter.Add(*trace.event);
  }
  void End(std::string& out) override { m_filter.Finish(out); }
  bool IsTooLong() const override { return m_filter.IsTooLong(); }

 private:
  CopiedFilter m_filter;
};

}  // namespace

std::unique_ptr<CopyWriter> MakeCopyWriter(CopyForm form, const CopyContext& context) {
  switch (form) {
    case CopyForm::Text:
      return std::make_unique<AlignedWriter>(context);
    case CopyForm::Tabs:
      return std::make_unique<TabWriter>(context);
    case CopyForm::Csv:
      return std::make_unique<CsvWriter>(context);
    case CopyForm::Json:
      return std::make_unique<JsonWriter>(context);
    case CopyForm::FilterText:
      break;
  }
  return std::make_unique<FilterWriter>();
}
