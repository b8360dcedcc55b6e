#include "listview/export/export_dialogs.h"

#include <utility>

namespace {

const FileFilter kAllFiles{"All Files (*.*)", "*"};

// A box that was not offered or was disabled counts as not set.
bool BoxOf(const FileDialogAnswer& answer, std::size_t box, bool enabled) {
  return enabled && box < answer.boxes.size() && answer.boxes[box];
}

}  // namespace

CExportDialog::CExportDialog(Host& host, std::string suggestedName, bool enableSelected,
                             bool enableHidden)
    : m_host(host),
      m_suggestedName(std::move(suggestedName)),
      m_enableSelected(enableSelected),
      m_enableHidden(enableHidden) {}

int CExportDialog::DoModal() {
  FileDialogRequest request;
  request.save = true;
  request.title = "Export";
  request.defaultExtension = ".csv";
  request.suggestedName = m_suggestedName;
  request.filters = {
      {"Comma-separated Files (*.csv)", "*.csv"}, {"Text Files (*.txt)", "*.txt"}, kAllFiles};
  request.boxes = {{"Export selected items only", m_enableSelected, m_selectedOnly},
                   {"Output hidden columns", m_enableHidden, m_hiddenColumns}};
  const std::optional<FileDialogAnswer> answer = m_host.RunFileDialog(request);
  if (!answer) return CDialog::kIdCancel;
  m_path = answer->path;
  m_selectedOnly = BoxOf(*answer, 0, m_enableSelected);
  m_hiddenColumns = BoxOf(*answer, 1, m_enableHidden);
  return CDialog::kIdOk;
}

CSaveAsDialog::CSaveAsDialog(Host& host, std::string suggestedName, bool enableSelected)
    : m_host(host), m_suggestedName(std::move(suggestedName)), m_enableSelected(enableSelected) {}

int CSaveAsDialog::DoModal() {
  FileDialogRequest request;
  request.save = true;
  request.title = "Save As";
  request.defaultExtension = ".trc";
  request.suggestedName = m_suggestedName;
  request.filters = {{"Trace Files (*.trc)", "*.trc"}, kAllFiles};
  request.boxes = {{"Only save selected items", m_enableSelected, m_selectedOnly}};
  const std::optional<FileDialogAnswer> answer = m_host.RunFileDialog(request);
  if (!answer) return CDialog::kIdCancel;
  m_path = answer->path;
  m_selectedOnly = BoxOf(*answer, 0, m_enableSelected);
  return CDialog::kIdOk;
}

std::string SuggestedName(std::string_view path, std::string_view title) {
  const std::string_view name = path.empty() ? title : path;
  return std::string(name.substr(0, name.rfind('.')));
}
