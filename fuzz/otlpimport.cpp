// Any bytes as a file of events: of Chrome's trace format, or of OpenTelemetry. The first byte
// chooses the form, and how much memory there is. Whatever comes is written to a trace file that
// can be walked to its end, and on each thread of Chrome's events no end comes before its begin.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "base/mapped_file.h"
#include "import/chrome/chrome_import.h"
#include "import/fields/import_clock.h"
#include "import/otlp/otlp_import.h"
#include "records/trc_walk.h"

namespace {

struct Walked {
  std::uint64_t traces = 0;
  std::map<NameId, int> open = {};  // by thread
  bool hasLost = false;

  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) {
    const RawTrace trace(record);
    ++traces;
    if (trace.Text().starts_with("Begin: ")) ++open[trace.TidId()];
    if (trace.Text().starts_with("End: ") && --open[trace.TidId()] < 0) hasLost = true;
  }
  void OnUnknownTag(std::uint64_t) { std::abort(); }
  void OnCutRecord(std::uint64_t) { std::abort(); }
  bool OnProgress(std::uint64_t) { return true; }
};

// Two processes may have one number for a thread, and an event any text: that proves nothing then.
bool MayProve(std::string_view bytes) {
  return bytes.find("Begin") == bytes.npos && bytes.find("End") == bytes.npos &&
         bytes.find("\\") == bytes.npos && bytes.find("lane") == bytes.npos &&
         bytes.find("pid") == bytes.npos && bytes.find("async") == bytes.npos &&
         bytes.find("thread_name") == bytes.npos;
}

template <class Import>
void Read(Import& import, ImportParts& parts, LineReader& reader, const std::string& path) {
  std::string why;
  if (!parts.Begin(path, &why) || !import.Read(reader, "in", &why) || !parts.Finish(&why))
    std::abort();
  if (!import.IsWhole() && import.Texts().empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = "/dev/shm/fuzz_otlpimport." + std::to_string(getpid());
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const int file = memfd_create("events", MFD_CLOEXEC);
  if (file < 0 || write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    std::abort();
  lseek(file, 0, SEEK_SET);
  ImportClock clock({.zone = ImportZone(0), .format = ""});
  const ImportFields fields({}, clock);
  ImportParts parts(kTrcFileBytesMax);
  LineReader reader(file, [] { return true; });
  const bool isChrome = data[0] < 0x80;
  if (isChrome) {
    ChromeImport import(fields, parts, data[0] < 0x40 ? ChromeImport::kHeldBytes : 2000);
    Read(import, parts, reader, path);
  } else {
    OtlpImport import(fields, parts);
    Read(import, parts, reader, path);
  }
  close(file);
  Walked walked;
  std::string why;
  const auto written = MappedFile::Open(path, &why);
  if (!written) std::abort();
  WalkTrc(written->View(), walked);
  if (walked.traces != parts.Traces()) std::abort();
  if (isChrome && MayProve(bytes) && walked.hasLost) std::abort();
  unlink(path.c_str());
  return 0;
}
