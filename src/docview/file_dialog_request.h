// What a file dialog shows, and what the user chose.
//
// Shape    Plain values for Host::RunFileDialog. All texts are UTF-8.
#pragma once

#include <string>
#include <vector>

struct FileFilter {
  std::string label;     // "Trace Files (*.trc)"
  std::string patterns;  // "*.trc", or "*.c; *.cpp"
};

struct FileDialogBox {  // a check box inside the file dialog
  std::string text;
  bool enabled = true;
  bool checked = false;
};

struct FileDialogNote {  // a text to read and copy, above the files
  std::string label;     // "Recorded path:"
  std::string text;      // empty: no note
};

struct FileDialogRequest {
  bool save = false;  // asks before it overwrites the final name; otherwise the file must exist
  std::string title;
  std::string defaultExtension;  // ".trc", appended as docview/dialogs/file_name.h says
  std::string suggestedName;     // may have a folder
  std::vector<FileFilter> filters;
  std::vector<FileDialogBox> boxes;
  FileDialogNote note = {};
};

struct FileDialogAnswer {
  std::string path;  // absolute
  std::vector<bool> boxes;
};
