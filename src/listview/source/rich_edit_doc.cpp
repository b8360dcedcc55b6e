#include "listview/source/rich_edit_doc.h"

#include <errno.h>
#include <unistd.h>

#include "base/file_gate.h"
#include "base/file_stream.h"
#include "base/new_file.h"
#include "docview/commands/command_ids.h"
#include "listview/source/rich_edit_view.h"

namespace {

// Syncs the file before the old file loses its name. A device needs no sync.
bool BringToDisk(const OpenFile& file) {
  return fdatasync(file.Descriptor()) == 0 || errno == EINVAL;
}

}  // namespace

CRichEditDoc::CRichEditDoc(Host& host) : CDocument(host) {
  // The menu says "Save As...": a file is overwritten only after a question.
  MapCommand(ID_FILE_SAVE, [this] { DoSave(nullptr, true); });
}

void CRichEditDoc::DeleteContents() {
  m_file = {};
  CDocument::DeleteContents();
}

bool CRichEditDoc::OnOpenDocument(const std::string& path) {
  std::string why;
  if (!ReadTextFile(path, m_file, &why)) {
    GetHost().MessageBox({path + "\n" + why});
    return false;
  }
  SetModifiedFlag(false);
  return true;
}

bool CRichEditDoc::OnSaveDocument(const std::string& path) {
  const auto failed = [this](const char* text) {
    GetHost().MessageBox({text, BoxIcon::Stop, BoxButtons::Ok});
    return false;
  };
  CRichEditView* const view = GetView();
  if (view) m_file.text = view->Edit().GetText();
  const std::string bytes = EncodeText(m_file, m_file.text);
  NewFile place;
  OpenFile file;
  if (std::string why; place.Begin(path, &why)) file = CreateForWriting(place.WriteTo());
  if (!file) return failed("Error creating file.");
  ds_File_t::FOStream_t stream(file.Descriptor());
  const bool written = stream.Write(bytes.data(), bytes.size()) && BringToDisk(file);
  std::string why;
  if (!file.Close() || !written || !place.Finish(&why)) return failed("Error writing to file.");
  if (view) view->Edit().SetModify(false);
  SetModifiedFlag(false);
  return true;
}

CRichEditView* CRichEditDoc::GetView() const {
  for (CView* const view : Views()) {
    if (auto* edit = dynamic_cast<CRichEditView*>(view)) return edit;
  }
  return nullptr;
}
