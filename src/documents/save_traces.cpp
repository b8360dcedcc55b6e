#include "documents/save_traces.h"

#include "records/trc_writer.h"

bool SaveTraces(Host& host, const std::string& path, NameMap& names, BoxIcon icon,
                const std::function<void(const TraceSink& sink)>& visit) {
  const auto failed = [&](const char* text) {
    host.MessageBox({text, icon, BoxButtons::Ok});
    return false;
  };
  ClearWrittenMarks(names);
  TrcWriter writer(TrcWriter::kBlockBytes);
  if (!writer.Create(path)) return failed("Error creating file.");
  if (!writer.WriteHeader()) return failed("Error writing to file.");
  const CWaitCursor wait(host);
  bool good = true;
  visit([&](const TraceEvent_i& event) {
    good = good && writer.Write(event, names);
    return good;
  });
  // The last bytes leave the buffer only at the end, and a full disk may show only then.
  return (good && writer.Finish()) || failed("Error writing to file.");
}
