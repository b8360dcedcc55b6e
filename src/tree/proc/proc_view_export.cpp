// The export of the tree: what is open, as text.
#include "listview/export/export_dialogs.h"
#include "listview/export/export_file.h"
#include "tree/proc/proc_view.h"
#include "tree/proc/tree_text.h"

void CProcView::OnExport() {
  FileDialogRequest request;
  request.save = true;
  request.title = "Save As";
  request.defaultExtension = ".txt";
  request.suggestedName = SuggestedName(m_document.GetPathName(), m_document.GetTitle());
  request.filters = {{"Text Files (*.txt)", "*.txt"}, {"All Files (*.*)", "*"}};
  const std::optional<FileDialogAnswer> answer = GetHost().RunFileDialog(request);
  if (!answer) return;
  ExportFile file;
  if (!file.Open(answer->path)) {
    GetHost().MessageBox({"Error opening output file.", BoxIcon::None, BoxButtons::Ok});
    return;
  }
  // Kept: only the first item of the top level. Further machines are not exported.
  if (const TreeItem first = m_tree->Walk(0, TreeStep::FirstChild))
    VisitTree(*m_tree, first, *this, [&file](int depth, bool closed, const std::string& text) {
      AppendTreeLine(file.Buffer(), depth, closed, text);
      return file.EndLine();
    });
  if (!file.Close())
    GetHost().MessageBox({"Error writing to file.", BoxIcon::None, BoxButtons::Ok});
}
