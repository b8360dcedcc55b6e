#include "listview/export/export_run.h"

#include "base/new_file.h"
#include "documents/trace_pass.h"
#include "listview/export/export_file.h"

namespace {

constexpr int kLinesPerPart = 64;

class ExportWriting final : public LongWork {
 public:
  ExportWriting(const CTraceDoc& document, ExportFile& file, ExportText& text)
      : m_stand(document.m_traces), m_file(file), m_text(text) {}

  bool DoPart() override {
    // The traces of the text may have been released by then.
    m_good = m_good && m_stand.Holds();
    for (int i = 0; m_good && i < kLinesPerPart; ++i) {
      if (!m_text.Next(m_file.Buffer())) return true;
      m_good = m_file.EndLine();
    }
    return !m_good;
  }
  std::optional<int> Progress() const override { return m_text.Progress(); }
  bool Good() const { return m_good; }

 private:
  const TraceStand m_stand;
  ExportFile& m_file;
  ExportText& m_text;
  bool m_good = true;
};

ExportResult ReportNotOpened(Host& host) {
  host.MessageBox({"Error opening output file.", BoxIcon::None, BoxButtons::Ok});
  return ExportResult::NotOpened;
}

}  // namespace

ExportResult RunExport(CTraceDoc& document, const std::string& path, ExportText& text) {
  Host& host = document.GetHost();
  std::string why;
  NewFile file;
  ExportFile lines;
  if (!file.Begin(path, &why) || !lines.Open(file.WriteTo(), &why)) return ReportNotOpened(host);
  const CWaitCursor wait(host);
  ExportWriting writing(document, lines, text);
  if (!RunLongWork(host, &document, {"Tessera", "Exporting..."}, writing))
    return ExportResult::Cancelled;
  const bool written = lines.Close() && writing.Good();
  // Kept: the part that was written stays under the name, also after a failed write.
  if (!file.Finish(&why)) return ReportNotOpened(host);
  return written ? ExportResult::Whole : ExportResult::Failed;
}
