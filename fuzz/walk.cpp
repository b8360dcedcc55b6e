// Any bytes as a .trc file: walked, and every field of every trace read, formatted and written
// again.
#include <fcntl.h>

#include <cstdlib>

#include "base/file_stream.h"
#include "base/mapped_file.h"
#include "base/text.h"
#include "records/trace_list.h"
#include "records/trc_walk.h"

namespace {

struct Loaded {
  void OnName(NameId id, std::string_view utf8) { names[id] = {std::string(utf8), 0}; }
  void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
  void OnUnknownTag(std::uint64_t) { ++unknown; }
  bool OnProgress(std::uint64_t position) {
    if (position < last) std::abort();
    last = position;
    return true;
  }
  NameMap names;
  TraceList_t traces;
  std::uint64_t unknown = 0, last = 0;
};

// The sum has no meaning: only the reads are tested.
std::size_t ReadAll(const TraceEvent_i& event, const NameMap& names) {
  const std::string text = event.GetText(), stack = event.GetStack();
  if (text.find('\0') != text.npos || stack.find('\0') != stack.npos) std::abort();
  if (!IsUtf8(ReplaceMalformed(text))) std::abort();
  std::size_t sum = event.GetSequenceNumber() + event.GetTicCount() + event.GetSourceLine();
  for (const std::string& shown :
       {event.GetMachineName(names), event.GetAppName(names), event.GetComponentName(names),
        event.GetCategoryName(names), event.GetPidName(names), event.GetTidName(names),
        event.GetSourceFileName(names), event.GetTimeString(true), event.GetTimeString(false),
        AttributesToLabel(event.GetAttributes())}) {
    sum += shown.size();
  }
  return sum;
}

}  // namespace

// Volatile, so that the reads are not optimised away.
volatile std::size_t g_fieldsRead;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::uint8_t> bytes(data, data + size);
  bytes.resize(size + MappedFile::kGuardBytes);
  const Bytes view(bytes.data(), size);
  Loaded loaded;
  const std::uint64_t end = WalkTrc(view, loaded);
  if (VersionOf(view) == TrcVersion::Current && end < size) std::abort();

  static const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  ds_File_t::FOStream_t file(nowhere);
  ds_BufferedOutputStream_t stream(1024);
  stream.SetStream(file);
  std::size_t sum = 0;
  loaded.traces.ForEach(0, [&](TraceEvent_i* event) {
    sum += ReadAll(*event, loaded.names);
    if (!event->WriteFile(stream, loaded.names)) std::abort();
  });
  g_fieldsRead = sum;
  return 0;
}
