// The file of an export: text that is collected and handed over in large pieces.
//
// Owner    Holds the file from Open to Close or its end. What was written stays on the disk.
// Errors   Open says whether it worked. A write that fails is remembered: nothing more is written,
//          and Close says so.
// Threads  One at a time.
#pragma once

#include <string>

#include "base/file_gate.h"
#include "base/file_stream.h"

class ExportFile {
 public:
  ~ExportFile() { Close(); }
  // Makes the file anew; one that is open elsewhere in this program is left alone.
  bool Open(const std::string& path, std::string* why = nullptr);

  // What has not been handed over yet: a caller appends its line to it and then calls EndLine.
  std::string& Buffer() { return m_buffer; }
  // Ends the line. False when nothing more can be written.
  bool EndLine() {
    m_buffer.push_back('\n');
    return m_buffer.size() < kPieceBytes || Flush();
  }
  // True when every byte reached the file.
  bool Close();
  // The errno of the write that failed, 0 for none.
  int Error() const { return m_error; }

 private:
  static constexpr std::size_t kPieceBytes = 256 * 1024;
  bool Flush();

  OpenFile m_file;
  ds_File_t::FOStream_t m_stream;
  std::string m_buffer;
  int m_error = 0;
};
