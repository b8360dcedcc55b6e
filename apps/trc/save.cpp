#include "save.h"

#include "documents/save_traces.h"
#include "exit_status.h"
#include "interrupt.h"
#include "shown_traces.h"
#include "trace_file.h"

namespace {

bool SaveShown(const ShownTraces& traces, TerminalHost& host, const std::string& path) {
  return SaveTraces(host, path, traces.Document().m_names, BoxIcon::Stop,
                    [&traces](const TraceSink& sink) {
                      for (std::size_t row = 0; row < traces.Size(); ++row)
                        if (!sink(traces.At(row))) return;
                    });
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
  return StatusWithDamage(*document, Interrupted() ? kExitInterrupted : kExitGood);
}
