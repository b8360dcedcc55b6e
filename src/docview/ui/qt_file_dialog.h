// The file dialog, drawn by Qt itself because the platform's own holds no check boxes.
//
// Saving    The default extension is appended as docview/file_name.h says, the overwrite question
//           names the final file, and the folder must exist and let itself be entered.
// Opening   The file must exist.
//
// The field of a note has the object name "note".
#pragma once

#include <QFileDialog>
#include <optional>
#include <vector>

#include "docview/host.h"

class QCheckBox;

class QtFileDialog final : public QFileDialog {
 public:
  QtFileDialog(const FileDialogRequest& request, QWidget* parent);

  FileDialogAnswer Answer() const;
  void accept() override;

 private:
  void AddBoxes(const std::vector<FileDialogBox>& boxes);
  void AddNote(const FileDialogNote& note);
  void WidenColumns();
  void WidenSideBar();
  void CompleteName();
  bool FolderMayBeUsed();
  const FileDialogRequest m_request;
  std::vector<QCheckBox*> m_boxes;
};
