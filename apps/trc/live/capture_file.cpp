#include "live/capture_file.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <utility>

#include "base/fail_with.h"
#include "base/mapped_file.h"
#include "records/trc_walk.h"

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;

// The end of the last whole record, and the number of numbered traces up to there.
struct WholeRecords {
  explicit WholeRecords(Bytes file) : bytes(file), end(std::min(kTrcHeaderBytes, file.size())) {}
  static void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) {
    const auto behind = static_cast<std::uint64_t>(record - bytes.data()) + RawTrace(record).Size();
    if (behind > bytes.size()) return;
    end = behind;
    if (RawTrace(record).SequenceNumber() != kNoSequenceNumber) ++traces;
  }
  static void OnUnknownTag(std::uint64_t) {}
  static bool OnProgress(std::uint64_t) { return true; }
  Bytes bytes;
  std::uint64_t end, traces = 0;
};

// Includes the names that the file does not have yet.
std::uint64_t BytesOf(const TraceEvent_i& trace, const NameMap& names) {
  const RawTrace record(trace.Record());
  std::uint64_t bytes = kTagBytes + record.Size();
  for (const NameId id : record.Ids().All()) {
    const auto name = names.find(id);
    if (name != names.end() && !name->second.written)
      bytes += kNameRecordBytes + name->second.name.size();
  }
  return bytes;
}

}  // namespace

CaptureFile::CaptureFile(const CaptureOptions& options)
    : m_path(options.out),
      m_maxBytes(options.maxMegabytes == 0 || options.maxMegabytes > kTrcFileBytesMax / kMegabyte
                     ? kTrcFileBytesMax
                     : options.maxMegabytes * kMegabyte),
      m_maxFiles(options.maxFiles) {
  const std::filesystem::path path(m_path);
  m_extension = path.extension().string();
  m_stem = m_path.substr(0, m_path.size() - m_extension.size());
}

bool CaptureFile::Begin(NameMap& names, std::string* why) {
  std::string reason;
  if (!m_writer.Create(m_path, &reason)) return FailWith(why, m_path + ": " + reason);
  ClearWrittenMarks(names);
  m_bytes = kTrcHeaderBytes;
  return m_writer.WriteHeader() || FailWith(why, m_path + ": Cannot write to output file");
}

bool CaptureFile::IsFullBy(const TraceEvent_i& trace, const NameMap& names) {
  m_addedBytes = BytesOf(trace, names);
  // Every file takes at least one trace, however long it is.
  return m_bytes > kTrcHeaderBytes && m_bytes + m_addedBytes > m_maxBytes;
}

bool CaptureFile::Write(const TraceEvent_i& trace, NameMap& names, std::string* why) {
  if (IsFullBy(trace, names)) {
    if (!Finish(why) || !ShiftUp(why)) return false;
    m_earlierTraces += std::exchange(m_traces, 0);
    if (!Begin(names, why)) return false;
    m_addedBytes = BytesOf(trace, names);
  }
  m_bytes += m_addedBytes;
  if (!m_writer.Write(trace, names)) return FailWith(why, m_path + ": Error writing to file.");
  // Loss reports are in the file, but are no traces of an application.
  if (trace.GetSequenceNumber() != kNoSequenceNumber) ++m_traces;
  return true;
}

// Bytes that the buffer could not write are not in the file, and its last record may be cut.
void CaptureFile::Salvage() {
  m_writer.Finish();
  m_traces = 0;
  std::uint64_t end = 0;
  if (const auto file = MappedFile::Open(m_path)) {
    WholeRecords records(file->View());
    WalkTrc(file->View(), records);
    m_traces = records.traces;
    end = records.end;
  }
  std::error_code ignored;
  // Without its header the file is not a trace file, and has no traces.
  if (end < kTrcHeaderBytes) {
    std::filesystem::remove(m_path, ignored);
  } else {
    std::filesystem::resize_file(m_path, end, ignored);
  }
}

bool CaptureFile::Flush(std::string* why) {
  return m_writer.Flush() || FailWith(why, m_path + ": Error writing to file.");
}

bool CaptureFile::Finish(std::string* why) {
  return m_writer.Finish() || FailWith(why, m_path + ": Error writing to file.");
}

bool CaptureFile::ShiftUp(std::string* why) {
  std::error_code error;
  std::uint64_t last = 1;
  while ((m_maxFiles == 0 || last < m_maxFiles) && std::filesystem::exists(Numbered(last), error))
    ++last;
  for (; last > 1 && !error; --last)
    std::filesystem::rename(Numbered(last - 1), Numbered(last), error);
  if (!error) std::filesystem::rename(m_path, Numbered(1), error);
  return !error || FailWith(why, m_path + ": " + error.message());
}

std::string CaptureFile::Numbered(std::uint64_t number) const {
  return m_stem + "." + std::to_string(number) + m_extension;
}
