// trc tail: live traces, one a line.
#include <algorithm>

#include "commands/columns_option.h"
#include "listview/columns/columns.h"
#include "live/live_source.h"
#include "live/silence.h"
#include "terminal/exit_status.h"
#include "text/text_line.h"
#include "text/trace_json.h"
#include "text/visible_text.h"

namespace {

// Writes one trace as a line into the output's buffer.
class Lines {
 public:
  virtual ~Lines() = default;
  virtual bool Add(const TakenTrace& taken, const TraceEvent_i* previous) = 0;
};

class JsonLines final : public Lines {
 public:
  JsonLines(const NameMap& names, bool utc, Output& output)
      : m_moments(utc), m_json(names, m_moments), m_output(output) {}
  bool Add(const TakenTrace& taken, const TraceEvent_i*) override {
    m_moments.Learn(m_index, *taken.trace);
    m_json.Append(m_output.Buffer(), m_index++, *taken.trace, taken.beside);
    return m_output.EndLine();
  }

 private:
  TraceMoments m_moments;
  TraceJson m_json;
  Output& m_output;
  std::uint64_t m_index = 0;
};

// Columns are as wide as the widest cell so far, because later cells are unknown.
class TextLines final : public Lines {
 public:
  TextLines(const NameMap& names, const TraceOptions& options, bool coloured, Output& output)
      : m_names(names),
        m_columns(options.columns.value_or(DefaultColumns())),
        m_utc(options.utc),
        m_coloured(coloured),
        m_line(output) {
    for (const Column column : m_columns) m_widths.push_back(ScreenWidth(InfoOf(column).header));
  }
  bool Add(const TakenTrace& taken, const TraceEvent_i* previous) override {
    const TraceEvent_i& trace = *taken.trace;
    if (!m_headed && !WriteHeader(trace)) return false;
    if (taken.behindGap && !m_line.Line(kGap)) return false;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const std::string text = VisibleCell(m_columns[i], trace, previous, m_names, m_utc);
      const std::size_t width = ScreenWidth(text);
      m_widths[i] = std::max(m_widths[i], std::min(width, kColumnWidthMax));
      const bool coloured = m_coloured && m_columns[i] == Column::Sev;
      m_line.Add(text, width, m_widths[i], AlignsRight(i),
                 coloured ? SeverityColour(trace) : std::string_view());
    }
    return m_line.End();
  }

 private:
  // Called with the first trace, whose cells determine the first widths.
  bool WriteHeader(const TraceEvent_i& first) {
    m_headed = true;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
      const Column column = m_columns[i];
      const std::string_view header = InfoOf(column).header;
      const std::size_t width = ScreenWidth(VisibleCell(column, first, nullptr, m_names, m_utc));
      m_widths[i] = std::max(m_widths[i], std::min(width, kColumnWidthMax));
      m_line.Add(header, header.size(), m_widths[i], AlignsRight(i));
    }
    return m_line.End();
  }
  bool AlignsRight(std::size_t i) const { return InfoOf(m_columns[i]).align == ColumnAlign::Right; }

  const NameMap& m_names;
  const std::vector<Column> m_columns;
  const bool m_utc, m_coloured;
  LineWriter m_line;
  std::vector<std::size_t> m_widths;
  bool m_headed = false;
};

// After a second without a trace prints the reason, once. Traces of other accounts are none.
class Silence {
 public:
  Silence(const LiveSource& source, const TailOptions& options)
      : m_source(source), m_options(options) {}
  void Look(bool hasPrinted) {
    if (m_over || Clock::now() < m_until) return;
    m_over = true;
    const std::string& account = m_options.limits.traces.filter.Account();
    if (account.empty() ? m_source.Counts().delivered > 0 : hasPrinted) return;
    PrintError("no traces come: " + (m_source.IsUp() ? WhyNothingComes(m_options.machine, account)
                                                     : "no trace service runs there any more"));
  }

 private:
  using Clock = std::chrono::steady_clock;
  const LiveSource& m_source;
  const TailOptions& m_options;
  const Clock::time_point m_until = Clock::now() + std::chrono::seconds(1);
  bool m_over = false;
};

}  // namespace

int RunTail(const TailOptions& options) {
  LiveSource source;
  if (!source.Connect(options.machine, options.limits)) return kExitBad;
  Output output;
  std::unique_ptr<Lines> lines;
  if (options.format == DumpFormat::Jsonl) {
    lines = std::make_unique<JsonLines>(source.Names(), options.limits.traces.utc, output);
  } else {
    lines = std::make_unique<TextLines>(source.Names(), options.limits.traces, options.coloured,
                                        output);
  }
  Silence silence(source, options);
  TraceEvent_i* previous = nullptr;
  source.Run(
      options.limits,
      [&](const TakenTrace& taken) {
        const bool goesOn = lines->Add(taken, previous);
        ReleaseTrace(std::exchange(previous, taken.trace));
        return goesOn;
      },
      [&] {
        silence.Look(previous != nullptr);
        return output.Flush();
      });
  ReleaseTrace(previous);
  const int status = output.Finish();
  if (status == kExitBad) return status;
  const std::uint64_t lost = source.Counts().lost;
  if (lost > 0) PrintError(std::to_string(lost) + " traces lost");
  // SIGINT is the usual end, not a failure.
  return lost > 0 ? kExitNo : kExitGood;
}
