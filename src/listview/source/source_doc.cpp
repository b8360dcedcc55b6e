#include "listview/source/source_doc.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "listview/source/source_map.h"
#include "settings/globals.h"

bool CSourceDoc::OnOpenDocument(const std::string& path) {
  const bool readable = access(path.c_str(), R_OK) == 0;
  const std::string local = readable ? path : ResolveSourcePath(GetHost(), path);
  if (local.empty() || !CRichEditDoc::OnOpenDocument(local)) return false;
  m_requestedPath = path;
  // Absolute, because file dialogs change the current folder. Not a recent file, because File Open
  // could not open it.
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(local, error);
  SetPathName(error ? local : absolute.string(), false);
  return true;
}

bool CSourceDoc::SaveModified() {
  return g_quickClose || CRichEditDoc::SaveModified();
}
