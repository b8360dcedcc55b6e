// The files that trc capture writes.
//
// Shape    NAME.trc. A full file is renamed to NAME.1.trc, the numbers of older ones go up, and the
//          oldest is removed. A new file is begun with its own header and names, so that each file
//          can be opened by itself.
// Errors   False and a reason. What was written stays; Salvage repairs its end.
// Threads  One.
#pragma once

#include <string>

#include "live/live.h"
#include "records/trc_writer.h"

class CaptureFile {
 public:
  explicit CaptureFile(const CaptureOptions& options);

  // An existing file is replaced.
  bool Begin(NameMap& names, std::string* why);
  bool Write(const TraceEvent_i& trace, NameMap& names, std::string* why);
  bool Flush(std::string* why);
  bool Finish(std::string* why);
  // After a failure: cuts the file after its last whole record, so that it reads like any other.
  // Removes a file that has no header.
  void Salvage();
  // Numbered traces in all files; after Finish or Salvage exactly those that are in a file.
  std::uint64_t Traces() const { return m_earlierTraces + m_traces; }

 private:
  bool IsFullBy(const TraceEvent_i& trace, const NameMap& names);
  bool ShiftUp(std::string* why);
  std::string Numbered(std::uint64_t number) const;

  const std::string m_path;
  std::string m_stem, m_extension;
  const std::uint64_t m_maxBytes, m_maxFiles;
  std::uint64_t m_bytes = 0;  // of the current file
  std::uint64_t m_addedBytes = 0;
  std::uint64_t m_earlierTraces = 0, m_traces = 0;
  TrcWriter m_writer;
};
