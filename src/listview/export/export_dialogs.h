// The save dialogs of an export and of a saved selection: file dialogs with check boxes.
//
// Errors   None: after a cancel nothing is chosen.
// Threads  Interface thread.
#pragma once

#include <string>
#include <string_view>

#include "docview/dialogs/dialog.h"

class CExportDialog {
 public:
  CExportDialog(Host& host, std::string suggestedName, bool enableSelected, bool enableHidden);

  int DoModal();  // CDialog::kIdOk or kIdCancel
  const std::string& GetPathName() const { return m_path; }

  bool m_selectedOnly = false;   // "Export selected items only"
  bool m_hiddenColumns = false;  // "Output hidden columns"

 private:
  Host& m_host;
  const std::string m_suggestedName;
  const bool m_enableSelected, m_enableHidden;
  std::string m_path;
};

class CSaveAsDialog {
 public:
  CSaveAsDialog(Host& host, std::string suggestedName, bool enableSelected);

  int DoModal();  // CDialog::kIdOk or kIdCancel
  const std::string& GetPathName() const { return m_path; }

  bool m_selectedOnly = false;  // "Only save selected items"

 private:
  Host& m_host;
  const std::string m_suggestedName;
  const bool m_enableSelected;
  std::string m_path;
};

// The name that both suggest for a document: its path, or its title if it has no path, up to the
// last ".". Kept: a path whose only "." is in the name of a folder is cut there, and so is the
// title of a monitor of "host.domain". Safe: it is only a suggestion, which the user sees.
std::string SuggestedName(std::string_view path, std::string_view title);
