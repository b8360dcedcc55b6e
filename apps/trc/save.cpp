#include "save.h"

#include "exit_status.h"
#include "interrupt.h"
#include "records/trc_writer.h"
#include "shown_traces.h"
#include "trace_file.h"

namespace {

// The words are those of a document's save.
bool SaveShown(const ShownTraces& traces, TerminalHost& host, const std::string& path) {
  const auto failed = [&host](const char* text) {
    host.MessageBox({text, BoxIcon::Stop, BoxButtons::Ok});
    return false;
  };
  NameMap& names = traces.Document().m_names;
  ClearWrittenMarks(names);
  TrcWriter writer;
  if (!writer.Create(path)) return failed("Error creating file.");
  bool good = writer.WriteHeader();
  {
    const CWaitCursor wait(host);
    for (std::size_t row = 0; good && row < traces.Size(); ++row)
      good = writer.Write(traces.At(row), names);
  }
  return (good && writer.Finish()) || failed("Error writing to file.");
}

}  // namespace

int RunSave(const SaveOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.in);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;
  ShownTraces traces(*document);
  if (!traces.Filter(options.filter)) return kExitBad;
  host.SetSubject(options.out);
  // A save is one step of the document: an interrupt that comes meanwhile is heard behind it.
  const bool good = options.filter.Empty() ? document->OnSaveDocument(options.out)
                                           : SaveShown(traces, host, options.out);
  if (!good) return kExitBad;
  return Interrupted() ? kExitInterrupted : kExitGood;
}
