#include "commands/export.h"

#include <unistd.h>

#include "commands/export_otlp.h"
#include "commands/new_text_file.h"
#include "commands/notes.h"
#include "filter/shown_traces.h"
#include "input/trace_input.h"
#include "listview/copy/clean_lines.h"
#include "listview/export/export_cells.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

// A list has no column for the account, so it comes only where it is named: behind all others.
std::vector<Column> ColumnsOf(const ExportOptions& options) {
  ColumnFlags shown = kDefaultActiveColumns;
  bool account = false;
  if (options.traces.columns) {
    shown = {};
    for (const Column column : *options.traces.columns) {
      if (column == Column::Account)
        account = true;
      else
        shown[static_cast<std::size_t>(column)] = 1;
    }
  }
  const bool all =
      options.hidden || (options.format != ExportFormat::Csv && !options.traces.columns);
  std::vector<Column> columns = ExportColumns(kDefaultColumnOrder, shown, all);
  if (account) columns.push_back(Column::Account);
  return columns;
}

class Exporter {
 public:
  Exporter(ShownTraces& traces, const ExportOptions& options, ProgressLine& progress)
      : m_traces(traces),
        m_options(options),
        m_columns(ColumnsOf(options)),
        m_moments(options.traces.utc),
        m_progress(progress) {
    if (options.format != ExportFormat::Csv) m_moments.Learn(traces.Document().m_traces);
  }

  // `Sink` has Buffer and EndLine; stops when it takes no more, and after an interrupt.
  template <class Sink>
  void Run(Sink& sink) {
    bool goesOn = WriteHeader(sink);
    m_traces.OnLook([this, &sink](std::size_t place) {
      if constexpr (requires { sink.FlushWhenOld(); })
        if (!sink.FlushWhenOld()) return false;
      return LookAt(place);
    });
    for (std::size_t row = m_traces.Limit(m_options.traces); goesOn && m_traces.Has(row); ++row) {
      WriteRow(sink.Buffer(), row);
      goesOn = sink.EndLine() && Look(row);
    }
    m_traces.OnLook({});  // the function refers to the sink
    m_progress.Clear();
  }

 private:
  template <class Sink>
  bool WriteHeader(Sink& sink) {
    if (m_options.format == ExportFormat::Jsonl) return true;
    if (m_options.format == ExportFormat::Csv)
      WriteExportHeader(sink.Buffer(), m_columns);
    else
      WriteRfc4180Header(sink.Buffer(), m_columns);
    return sink.EndLine();
  }

  void WriteRow(std::string& out, std::size_t row) {
    const TraceEvent_i& event = m_traces.At(row);
    const TraceEvent_i* const previous = row == 0 ? nullptr : &m_traces.At(row - 1);
    const NameMap& names = m_traces.Document().m_names;
    const CleanRow clean{m_traces.PlaceOf(row), event, previous, names, m_moments};
    if (m_options.format == ExportFormat::Csv)
      WriteExportLine(out, m_columns, event, previous, names, m_options.traces.utc);
    else if (m_options.format == ExportFormat::Jsonl)
      WriteJsonLine(out, m_columns, clean);
    else
      WriteRfc4180Line(out, m_columns, clean);
  }

  // Called between two rows if they are far apart.
  bool LookAt(std::size_t place) {
    m_progress.Show("Writing...", place, m_traces.All());
    return !Interrupted();
  }
  bool Look(std::size_t row) { return row % kTracesPerLook != 0 || LookAt(m_traces.PlaceOf(row)); }

  ShownTraces& m_traces;
  const ExportOptions& m_options;
  const std::vector<Column> m_columns;
  TraceMoments m_moments;
  ProgressLine& m_progress;
};

template <class AnyExporter>
int ExportToOutput(AnyExporter& exporter) {
  Output output;
  exporter.Run(output);
  return output.Finish();
}

template <class AnyExporter>
int ExportToFile(AnyExporter& exporter, const TraceInput& input, const ExportOptions& options) {
  NewTextFile file;
  if (!file.Open(options.out)) return kExitBad;
  exporter.Run(file.Lines());
  if (!Interrupted() && !input.IsUnchanged(options.out)) return kExitBad;
  return input.StatusWithDamage(file.Finish());
}

template <class AnyExporter>
int Export(AnyExporter& exporter, const TraceInput& input, const ExportOptions& options) {
  if (options.out != "-") return ExportToFile(exporter, input, options);
  return input.StatusOfAnswer(ExportToOutput(exporter));
}

}  // namespace

int RunExport(const ExportOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();
  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
  if (options.out == "-" && isatty(STDOUT_FILENO) != 0) host.Progress().Silence();
  if (options.format == ExportFormat::Otlp) {
    OtlpExporter exporter(traces, options.traces, host.Progress());
    return Export(exporter, input, options);
  }
  Exporter exporter(traces, options, host.Progress());
  return Export(exporter, input, options);
}
