#include "documents/trace_doc.h"

#include <utility>

#include "documents/save_traces.h"
#include "docview/commands/command_ids.h"
#include "settings/globals.h"

namespace {

class AllTraces final : public TraceSource {
 public:
  explicit AllTraces(const TraceList_t& traces) : m_traces(traces) {}

  const TraceEvent_i* Next() override {
    return m_next < m_traces.size() ? m_traces[m_next++] : nullptr;
  }
  std::optional<int> Progress() const override { return Thousandths(m_next, m_traces.size()); }

 private:
  const TraceList_t& m_traces;
  std::size_t m_next = 0;
};

}  // namespace

CTraceDoc::CTraceDoc(Host& host) : CDocument(host) {
  MapCommand(
      ID_EDIT_CLEAR_ALL,
      [this] {
        if (SaveModified()) DeleteContents();
      },
      [this](CCmdUI& ui) { ui.Enable(!m_traces.empty()); });
  // The view handles the command itself.
  MapUpdate(ID_VIEW_SYNCHRONIZE, [this](CCmdUI& ui) {
    ui.SetCheck(m_synchronize);
    ui.Enable(Views().size() > 1);
  });
  MapCommand(ID_FILE_SAVE, [this] { DoFileSave(); });
  MapCommand(ID_FILE_SAVECOPY, [this] { DoFileSave(); });
}

CTraceDoc::~CTraceDoc() {
  CTraceDoc::DeleteContents();
}

void CTraceDoc::AddTrace(TraceEvent_i* event) {
  m_traces.push_back(event);
  m_indexes.Note(*event);
  SetModifiedFlag(true);
}

bool CTraceDoc::OnNewDocument() {
  return CDocument::OnNewDocument();
}

void CTraceDoc::DeleteContents() {
  m_notes.Close();
  if (const std::shared_ptr<LentTraces> lent = m_lent.lock())
    lent->Keep(m_traces);
  else
    m_traces.Clear();
  m_lent.reset();
  CDocument::DeleteContents();
  UpdateAllViews(nullptr, kHintReady);
  UpdateAllViews(nullptr, kHintCleared);
}

std::shared_ptr<const LentTraces> CTraceDoc::Lend() {
  if (std::shared_ptr<LentTraces> lent = m_lent.lock()) return lent;
  std::shared_ptr<const MappedFile> file = FileOfTraces();
  if (!file || m_loading) return nullptr;
  auto lent = std::make_shared<LentTraces>(m_traces, std::move(file));
  m_lent = lent;
  return lent;
}

bool CTraceDoc::OnSaveDocument(const std::string& path) {
  AllTraces all(m_traces);
  return SaveTraces(*this, path, BoxIcon::Stop, all);
}

bool CTraceDoc::SaveModified() {
  return g_quickClose || (m_notes.MayClose() && CDocument::SaveModified());
}

// A trace document cannot be saved in place: its own file is mapped, or it has none.
bool CTraceDoc::DoFileSave() {
  return MayBeWritten() && DoSave(nullptr, false);
}

bool CTraceDoc::MayBeWritten() const {
  if (m_loading)
    GetHost().MessageBox(
        {"The traces of this file have not been loaded.", BoxIcon::Warning, BoxButtons::Ok});
  return !m_loading;
}
