// The one way in which this program writes a .trc file: create, header, traces, end.
//
// The save, the saving of a selection, a capture and a conversion share it; each has its own words
// for a failure, so it reports which step failed and says nothing.
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

  // A capture hands every full buffer to the file, which others may read while it grows.
  TrcWriter() = default;
  // A file that is written in one go leaves in blocks of so many bytes.
  explicit TrcWriter(std::size_t blockBytes) : m_blockBytes(blockBytes) {}
  ~TrcWriter();
  // Opens the file, shared with nobody. Closes an earlier one first.
  bool Create(const std::string& path, std::string* why = nullptr);
  bool WriteHeader();
  bool Write(const TraceEvent_i& event, NameMap& names);
  // Hands over what is held, for a writer that goes on. False when a byte did not reach the file.
  bool Flush();
  // Hands over what is held and waits until the disk has it, before another file is given up for
  // this one.
  bool Sync();
  // Hands over the last bytes and closes. True when every byte reached the file.
  bool Finish();
  // Why a write failed, for a person; empty when none has, or when it showed only at the close.
  std::string Why() const;
  // Of the open file. REQUIRES: it is open.
  std::optional<FileMark> Mark() const { return FileMark::Of(m_file.Descriptor()); }
  bool IsOpen() const { return static_cast<bool>(m_file); }

 private:
  std::size_t m_blockBytes = 0;
  OpenFile m_file;
  ds_File_t::FOStream_t m_stream;
  std::unique_ptr<ds_BufferedOutputStream_t> m_buffer;
  int m_error = 0;  // of the file that is closed
};

// Clears every written mark, so that the next file gets each name it needs.
void ClearWrittenMarks(NameMap& names);
