#include "save.h"

#include "exit_status.h"
#include "interrupt.h"
#include "trace_file.h"

int RunSave(const SaveOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.in);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;
  host.SetSubject(options.out);
  // A save is one step of the document: an interrupt that comes meanwhile is heard behind it.
  if (!document->OnSaveDocument(options.out)) return kExitBad;
  return Interrupted() ? kExitInterrupted : kExitGood;
}
