// The file of an export. Text is collected and written in large pieces.
//
// Owner    Holds the file from Open to Close or its end. What was written stays on the disk.
// Errors   Open returns success or failure. After a failed write nothing more is written, and Close
//          returns false.
// Threads  One at a time.
#pragma once

#include <string>

#include "base/file_gate.h"
#include "base/file_stream.h"

class ExportFile {
 public:
  ~ExportFile() { Close(); }
  // Creates the file; fails if it is open elsewhere in this program.
  bool Open(const std::string& path, std::string* why = nullptr);

  // The text that is not written yet: a caller appends its line to it and then calls EndLine.
  std::string& Buffer() { return m_buffer; }
  // Ends the line. False when nothing more can be written.
  bool EndLine() {
    m_buffer.push_back('\n');
    return m_buffer.size() < kPieceBytes || Flush();
  }
  // True when every byte reached the file.
  bool Close();
  // The errno of the failed write, 0 for none.
  int Error() const { return m_error; }

 private:
  static constexpr std::size_t kPieceBytes = 256 * 1024;
  bool Flush();

  OpenFile m_file;
  ds_File_t::FOStream_t m_stream;
  std::string m_buffer;
  int m_error = 0;
};
