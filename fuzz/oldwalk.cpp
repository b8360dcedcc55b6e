// Any bytes as a trace file of the older format: converted, and the new file read completely.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>

#include "base/mapped_file.h"
#include "records/old_conversion.h"
#include "records/old_walk.h"

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

// The counts of a second, plain pass over the same bytes.
struct Counter {
  void OnName(OldName kind, std::uint8_t, std::string_view text) {
    Require(static_cast<std::size_t>(kind) < kOldNameKinds);
    Require(text.find('\0') == text.npos);
  }
  bool OnTrace(const OldTrace& trace, std::string_view text) {
    Require(text.find('\0') == text.npos);
    lastCount = trace.SequenceNumber();
    ++traces;
    return true;
  }
  void OnUnknownTag(std::uint64_t position) {
    Require(position >= kOldTrcHeaderBytes);
    ++unknown;
  }
  bool OnProgress(std::uint64_t position) {
    Require(position > last);
    last = position;
    return true;
  }
  std::uint64_t traces = 0, unknown = 0, last = 0;
  std::uint32_t lastCount = 0;
};

// The new file has only records, and every name comes before its first use.
struct Reader {
  void OnName(NameId id, std::string_view) { Require(names.insert(id).second); }
  void OnTrace(const std::uint8_t* record) {
    const RawTrace trace(record);
    Require(trace.StackLength() == 0);
    Require(names.count(trace.PidId()) == 1 && names.count(trace.TidId()) == 1);
    for (const NameId id : {trace.MachineId(), trace.AppId(), trace.ComponentId(),
                            trace.CategoryId(), trace.SourceFileId()}) {
      Require(names.count(id) == 1);  // id 0 too: at the latest the process's number has it
    }
    Require((trace.Attributes() & ~31) == 0);
    lastCount = trace.SequenceNumber();
    ++traces;
  }
  void OnUnknownTag(std::uint64_t) { std::abort(); }
  bool OnProgress(std::uint64_t) { return true; }
  std::set<NameId> names;
  std::uint64_t traces = 0;
  std::uint32_t lastCount = 0;
};

std::string ReadBack(int file) {
  struct stat status;
  Require(fstat(file, &status) == 0);
  std::string bytes(static_cast<std::size_t>(status.st_size) + MappedFile::kGuardBytes, '\0');
  Require(pread(file, bytes.data(), static_cast<std::size_t>(status.st_size), 0) == status.st_size);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("converted", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  std::vector<std::uint8_t> bytes(data, data + size);
  bytes.resize(size + OldTrace::kFixedBytes);
  bytes.shrink_to_fit();
  const Bytes old(bytes.data(), size);
  Counter counter;
  const std::uint64_t end = WalkOldTrc(old, counter);
  Require(end >= size && end <= size + OldTrace::kFixedBytes + kOldTrcHeaderBytes + 1);

  TrcWriter writer;
  Require(writer.Create(path));
  const OldConversion result = ConvertOldTrc(old, writer, [](std::uint64_t) { return true; });
  Require(writer.Finish() && result.written);
  Require(result.position == end && result.traces == counter.traces);
  Require(result.damage.skippedBytes == counter.unknown);

  const std::string made = ReadBack(file);
  const Bytes view(reinterpret_cast<const std::uint8_t*>(made.data()),
                   made.size() - MappedFile::kGuardBytes);
  Require(VersionOf(view) == TrcVersion::Current);
  Reader reader;
  Require(WalkTrc(view, reader) == view.size());
  Require(reader.traces == counter.traces && reader.lastCount == counter.lastCount);
  return 0;
}
