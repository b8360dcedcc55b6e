#include "commands/stack.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <iterator>

#include "commands/notes.h"
#include "filter/shown_traces.h"
#include "input/trace_input.h"
#include "symbols/symbol_reader.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "text/visible_text.h"

namespace {

constexpr std::string_view kIndent = "    ";

// Writes stacks, and at the end says what is missing.
class StackWriter {
 public:
  StackWriter(const StackOptions& options, Output& output)
      : m_recorded(options.recorded), m_reader(options.folders), m_output(output) {
    m_reader.CancelIf(Interrupted);
  }

  bool Write(const std::string& stack, std::string_view indent) {
    const StackNames names = m_recorded ? WithoutNames(stack) : m_reader.Names(stack);
    for (const std::string& missing : names.missing)
      if (std::find(m_missing.begin(), m_missing.end(), missing) == m_missing.end())
        m_missing.push_back(missing);
    for (const NamedFrame& frame : names.frames) {
      m_output.Buffer().append(indent).append(VisibleText(frame.text));
      if (!m_output.EndLine()) return false;
    }
    return true;
  }
  void ReportMissing() const {
    for (const std::string& missing : m_missing) PrintError(VisibleText(missing));
  }

 private:
  const bool m_recorded;
  SymbolReader m_reader;
  Output& m_output;
  std::vector<std::string> m_missing;
};

int WriteGivenStack(StackWriter& writer, Output& output) {
  const std::string text(std::istreambuf_iterator<char>(std::cin), {});
  writer.Write(text, {});
  const int status = output.Finish();
  writer.ReportMissing();
  return status == kExitGood && text.empty() ? kExitNo : status;
}

std::vector<std::string> AllFolders(const StackOptions& options) {
  std::vector<std::string> folders = options.folders;
  for (const std::string& folder : SymbolReader::FoldersOfEnvironment()) folders.push_back(folder);
  return folders;
}

int WriteStacksOfFile(const StackOptions& options, StackWriter& writer, Output& output) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();
  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
  traces.Keep([](const TraceEvent_i& trace) { return !trace.GetStack().empty(); });
  if (isatty(STDOUT_FILENO) != 0) host.Progress().Silence();
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show("Searching...", place, traces.All());
    return output.FlushWhenOld() && !Interrupted();
  });
  std::uint64_t written = 0;
  for (std::size_t row = traces.Limit(options.traces); traces.Has(row) && !Interrupted();
       ++row, ++written) {
    output.Buffer().append(std::to_string(traces.PlaceOf(row))).append(": ");
    output.Buffer().append(VisibleText(traces.At(row).GetText()));
    if (!output.EndLine() || !writer.Write(traces.At(row).GetStack(), kIndent)) break;
  }
  host.Progress().Clear();
  const int status = output.Finish();
  writer.ReportMissing();
  return input.StatusOfAnswer(status == kExitGood && written == 0 ? kExitNo : status);
}

}  // namespace

int RunStack(const StackOptions& given) {
  StackOptions options = given;
  options.folders = AllFolders(given);
  Output output;
  StackWriter writer(options, output);
  return options.files.front() == "-" ? WriteGivenStack(writer, output)
                                      : WriteStacksOfFile(options, writer, output);
}
