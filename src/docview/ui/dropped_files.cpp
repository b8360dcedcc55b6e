#include "docview/ui/dropped_files.h"

#include <QMimeData>
#include <QUrl>

std::vector<std::string> DroppedFiles(const QMimeData& data) {
  std::vector<std::string> paths;
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
  }
  return paths;
}
