// The file dialog, drawn by Qt itself because the platform's own dialog cannot contain check boxes.
//
// Saving    docview/dialogs/file_name.h appends the default extension, the overwrite question names
//           the final file, and the folder must exist and be accessible.
// Opening   The file must exist.
//
// Files     No file is read to show its icon or its kind: a FIFO without a writer would block the
//           dialog. Names have room to be read in a narrow dialog, too.
//
// The field of a note has the object name "note".
#pragma once

#include <QFileDialog>
#include <optional>
#include <vector>

#include "docview/host.h"

class QCheckBox;
class QTreeView;

class QtFileDialog final : public QFileDialog {
 public:
  QtFileDialog(const FileDialogRequest& request, QWidget* parent);

  FileDialogAnswer Answer() const;
  void accept() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void AddBoxes(const std::vector<FileDialogBox>& boxes);
  void AddNote(const FileDialogNote& note);
  void WidenColumns();
  void FitNames();
  void WidenSideBar();
  void CompleteName();
  bool FolderMayBeUsed();
  const FileDialogRequest m_request;
  QTreeView* m_files = nullptr;
  std::vector<QCheckBox*> m_boxes;
};
