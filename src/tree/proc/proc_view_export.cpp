// The export of the tree: the opened items, as text.
#include "listview/export/export_dialogs.h"
#include "listview/export/export_run.h"
#include "tree/proc/model/tree_text.h"
#include "tree/proc/proc_view.h"

void CProcView::OnExport() {
  if (!m_document.MayBeWritten() || !FinishFilter()) return;
  FileDialogRequest request;
  request.save = true;
  request.title = "Export";
  request.defaultExtension = ".txt";
  request.suggestedName = SuggestedName(m_document.GetPathName(), m_document.GetTitle());
  request.filters = {{"Text Files (*.txt)", "*.txt"}, {"All Files (*.*)", "*"}};
  const std::optional<FileDialogAnswer> answer = GetHost().RunFileDialog(request);
  if (!answer) return;
  // Kept: only the first item of the top level. Further machines are not exported.
  TreeLines lines(*m_tree, m_tree->Walk(0, TreeStep::FirstChild), *this);
  if (RunExport(m_document, answer->path, lines) == ExportResult::Failed)
    GetHost().MessageBox({"Error writing to file.", BoxIcon::None, BoxButtons::Ok});
}
