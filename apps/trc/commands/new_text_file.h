// The text file of trc export and trc tree --export, with the messages of the desktop's export.
//
// Errors   Printed to standard error; Open then returns false, and Finish the exit status.
// Threads  One.
#pragma once

#include <string>

#include "base/new_file.h"
#include "listview/export/export_file.h"

class NewTextFile {
 public:
  bool Open(const std::string& path);
  ExportFile& Lines() { return m_lines; }
  // Gives the file its name, unless a write failed or there was an interrupt.
  int Finish();

 private:
  void ReportError(const char* text, const std::string& why) const;

  std::string m_path;
  NewFile m_file;
  ExportFile m_lines;
};
