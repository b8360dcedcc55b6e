#include "capture_file.h"

#include <filesystem>
#include <limits>

#include "records/trc_walk.h"

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;
// Readers take less than 4 GiB.
constexpr std::uint64_t kMostFileBytes = 0xFFFFFFFF;
constexpr std::uint64_t kNameRecordBytes = 5;

bool Say(std::string* why, const std::string& path, const char* words) {
  *why = path + ": " + words;
  return false;
}

// With the names that a file lacks.
std::uint64_t BytesOf(const TraceEvent_i& trace, const NameMap& names) {
  std::uint64_t bytes = 1 + RawTrace(trace.Record()).Size();
  for (const NameId id :
       {trace.GetMachineId(), trace.GetAppId(), trace.GetComponentId(), trace.GetCategoryId(),
        trace.GetPidId(), trace.GetTidId(), trace.GetSourceFileId()}) {
    const auto name = names.find(id);
    if (name != names.end() && !name->second.written)
      bytes += kNameRecordBytes + name->second.name.size();
  }
  return bytes;
}

}  // namespace

CaptureFile::CaptureFile(const CaptureOptions& options)
    : m_path(options.out),
      m_maxBytes(options.maxMegabytes == 0 || options.maxMegabytes > kMostFileBytes / kMegabyte
                     ? kMostFileBytes
                     : options.maxMegabytes * kMegabyte),
      m_maxFiles(options.maxFiles) {
  const std::filesystem::path path(m_path);
  m_extension = path.extension().string();
  m_stem = m_path.substr(0, m_path.size() - m_extension.size());
}

bool CaptureFile::Begin(NameMap& names, std::string* why) {
  if (!m_writer.Create(m_path, why)) {
    *why = m_path + ": " + *why;
    return false;
  }
  ClearWrittenMarks(names);
  m_bytes = kTrcHeaderBytes;
  return m_writer.WriteHeader() || Say(why, m_path, "Cannot write to output file");
}

bool CaptureFile::IsFullBy(const TraceEvent_i& trace, const NameMap& names) {
  m_addedBytes = BytesOf(trace, names);
  // One trace at least goes into every file, however long it is.
  return m_bytes > kTrcHeaderBytes && m_bytes + m_addedBytes > m_maxBytes;
}

bool CaptureFile::Write(const TraceEvent_i& trace, NameMap& names, std::string* why) {
  if (IsFullBy(trace, names)) {
    if (!Finish(why) || !ShiftUp(why) || !Begin(names, why)) return false;
    m_addedBytes = BytesOf(trace, names);
  }
  m_bytes += m_addedBytes;
  return m_writer.Write(trace, names) || Say(why, m_path, "Error writing to file.");
}

bool CaptureFile::Flush(std::string* why) {
  return m_writer.Flush() || Say(why, m_path, "Error writing to file.");
}

bool CaptureFile::Finish(std::string* why) {
  return m_writer.Finish() || Say(why, m_path, "Error writing to file.");
}

bool CaptureFile::ShiftUp(std::string* why) {
  std::error_code error;
  std::uint64_t last = 1;
  while ((m_maxFiles == 0 || last < m_maxFiles) && std::filesystem::exists(Numbered(last), error))
    ++last;
  for (; last > 1 && !error; --last)
    std::filesystem::rename(Numbered(last - 1), Numbered(last), error);
  if (!error) std::filesystem::rename(m_path, Numbered(1), error);
  return !error || Say(why, m_path, error.message().c_str());
}

std::string CaptureFile::Numbered(std::uint64_t number) const {
  return m_stem + "." + std::to_string(number) + m_extension;
}
