#include "documents/save_traces.h"

#include "base/new_file.h"
#include "documents/trace_pass.h"
#include "notes/kept/saved_notes.h"
#include "records/trc_writer.h"

namespace {

constexpr int kTracesPerSavePart = 256;

class TraceSaving final : public LongWork {
 public:
  TraceSaving(CTraceDoc& document, TrcWriter& writer, TraceSource& source)
      : m_stand(document.m_traces),
        m_names(document.m_names),
        m_writer(writer),
        m_source(source),
        m_notes(document.Notes().Notes()) {}

  bool DoPart() override {
    // The traces of the source may have been released by then.
    m_good = m_good && m_stand.Holds();
    for (int i = 0; m_good && i < kTracesPerSavePart; ++i) {
      const TraceEvent_i* const event = m_source.Next();
      if (!event) return true;
      m_good = m_writer.Write(*event, m_names);
      m_notes.Add(*event);
    }
    return !m_good;
  }
  std::optional<int> Progress() const override { return m_source.Progress(); }
  bool Good() const { return m_good; }
  SavedNotes& Notes() { return m_notes; }

 private:
  const TraceStand m_stand;
  NameMap& m_names;
  TrcWriter& m_writer;
  TraceSource& m_source;
  SavedNotes m_notes;
  bool m_good = true;
};

// The traces are saved, whatever becomes of their notes.
void SaveNotes(Host& host, const std::string& path, SavedNotes& notes) {
  if (notes.empty()) return;
  const auto mayReplace = [&host](const std::string& there) {
    return host.MessageBox({there + ": has the notes of the file before.\n\nReplace it?",
                            BoxIcon::Warning, BoxButtons::YesNo}) == BoxAnswer::Yes;
  };
  std::string why;
  if (!SaveNewNotes(path, notes.Take(), mayReplace, &why))
    host.MessageBox({"The traces are saved without their marks and notes.\n\n" + why,
                     BoxIcon::Warning, BoxButtons::Ok});
}

}  // namespace

bool SaveTraces(CTraceDoc& document, const std::string& path, BoxIcon icon, TraceSource& source) {
  Host& host = document.GetHost();
  const auto failed = [&](const char* text) {
    host.MessageBox({text, icon, BoxButtons::Ok});
    return false;
  };
  ClearWrittenMarks(document.m_names);
  std::string why;
  NewFile file;
  TrcWriter writer(TrcWriter::kBlockBytes);
  if (!file.Begin(path, &why) || !writer.Create(file.WriteTo(), &why))
    return failed("Error creating file.");
  if (!writer.WriteHeader()) return failed("Error writing to file.");
  const CWaitCursor wait(host);
  TraceSaving saving(document, writer, source);
  if (!RunLongWork(host, &document, {"Tessera", "Saving..."}, saving)) {
    // A running capture writes the names again that only this file has.
    ClearWrittenMarks(document.m_names);
    return false;
  }
  // The last bytes leave the buffer only at the end, and a full disk may show only then.
  const bool written = writer.Finish() && saving.Good();
  // Kept: the part that was written stays under the name, also after a failed write.
  const bool named = file.Finish(&why);
  if (!written || !named) return failed("Error writing to file.");
  SaveNotes(host, path, saving.Notes());
  return true;
}
