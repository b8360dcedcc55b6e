// Writes a .trc file: create, header, traces, end. The program writes such files only here.
//
// A save, a save of a selection, a capture and a conversion use it. Each has its own message for a
// failure, so the writer reports which step failed and shows nothing.
//
// Owner    Holds the file from Create to Finish or its end. What was written stays on the disk.
// Errors   Every write failure, also one that the kernel reports only at the close, fails Finish.
// Threads  One at a time.
#pragma once

#include <memory>
#include <string>

#include "base/file_gate.h"
#include "base/file_mark.h"
#include "base/file_stream.h"
#include "records/trace_event.h"

class TrcWriter {
 public:
  static constexpr std::size_t kBufferBytes = 1024;
  static constexpr std::size_t kBlockBytes = 65536;

  // For a capture: every full buffer is written to the file, which others may read while it grows.
  TrcWriter() = default;
  // For a file that is written in one go: written in blocks of so many bytes.
  explicit TrcWriter(std::size_t blockBytes) : m_blockBytes(blockBytes) {}
  ~TrcWriter();
  // Opens the file exclusively. Closes an earlier one first.
  bool Create(const std::string& path, std::string* why = nullptr, Links links = Links::Follow);
  bool WriteHeader();
  bool Write(const TraceEvent_i& event, NameMap& names);
  // Writes what is buffered. False when a byte did not reach the file.
  bool Flush();
  // Writes what is buffered and waits until it is on the disk, before the file replaces another
  // one.
  bool Sync();
  // Writes the last bytes and closes. True when every byte reached the file.
  bool Finish();
  // The reason of a failed write, as a message; empty if none failed, or if only the close failed.
  std::string Why() const;
  // The mark of the open file. REQUIRES: it is open.
  std::optional<FileMark> Mark() const { return FileMark::Of(m_file.Descriptor()); }
  bool IsOpen() const { return static_cast<bool>(m_file); }

 private:
  std::size_t m_blockBytes = 0;
  OpenFile m_file;
  ds_File_t::FOStream_t m_stream;
  std::unique_ptr<ds_BufferedOutputStream_t> m_buffer;
  int m_error = 0;  // of the closed file
};

// Clears every written mark, so that the next file gets each name it needs.
void ClearWrittenMarks(NameMap& names);
