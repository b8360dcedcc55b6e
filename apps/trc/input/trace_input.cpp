#include "input/trace_input.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "input/merge_traces.h"
#include "input/unpack.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

// Must its bytes be copied before they can be mapped? False also when it cannot be opened: the
// attempt to open it as a trace file tells why.
bool NeedsCopy(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) return false;
  if (!S_ISREG(status.st_mode)) return true;
  char begin[4] = {};
  const ssize_t count = pread(descriptor, begin, sizeof begin, 0);
  return count > 0 && PackingOf({begin, static_cast<std::size_t>(count)}) != PackedAs::Plain;
}

// Each file is mapped, and unpacked into one without a name.
void NeedDescriptors(std::size_t files) {
  constexpr rlim_t kOfEach = 3, kOthers = 32;
  rlimit limit{};
  const rlim_t wanted = files * kOfEach + kOthers;
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= wanted) return;
  limit.rlim_cur = std::min(wanted, limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
}

class Descriptor {
 public:
  // A FIFO whose writer is still to come must not hold us up: that wait ends at an interrupt.
  explicit Descriptor(const std::string& path)
      : m_number(path == "-" ? STDIN_FILENO
                             : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  ~Descriptor() {
    if (m_number > STDIN_FILENO) close(m_number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Number() const { return m_number; }

 private:
  const int m_number;
};

}  // namespace

int StatusWithoutInput() {
  return Interrupted() ? kExitInterrupted : kExitBad;
}

bool TraceInput::Open(const std::vector<std::string>& paths, std::shared_ptr<LoadSearch> search) {
  m_search = std::move(search);
  if (std::count(paths.begin(), paths.end(), "-") > 1) {
    PrintError("standard input can be given once only");
    return false;
  }
  NeedDescriptors(paths.size());
  for (const std::string& path : paths)
    if (!OpenOne(path)) return false;
  return m_sources.size() == 1 || Merge();
}

bool TraceInput::OpenOne(const std::string& path) {
  Source source;
  source.isNamed = path != "-";
  source.path = path == "-" ? "standard input" : path;
  std::string opened = path;
  {
    const Descriptor descriptor(path);
    if (path == "-" || (descriptor.Number() >= 0 && NeedsCopy(descriptor.Number()))) {
      if (!Unpack(source, descriptor.Number())) return false;
      opened = source.unpacked.Path();
    }
  }
  source.document = OpenTraceFile(m_host, opened, {.search = m_search}, source.path);
  if (!source.document) return false;
  m_sources.push_back(std::move(source));
  return true;
}

bool TraceInput::Unpack(Source& source, int descriptor) {
  std::string why;
  m_host.Progress().Show("Reading " + source.path + "...");
  const UnpackResult result = CopyUnpacked(descriptor, source.unpacked, &why);
  m_host.Progress().Clear();
  if (Interrupted()) return false;
  source.isPrivate = true;
  if (result != UnpackResult::Whole) PrintError(source.path + ": " + why);
  m_cut = m_cut || result == UnpackResult::Cut;
  return result != UnpackResult::Failed;
}

bool TraceInput::Merge() {
  std::vector<const CTraceDoc*> documents;
  std::uint64_t traces = 0, bytes = 0;
  for (const Source& source : m_sources) {
    documents.push_back(source.document.get());
    traces += source.document->m_traces.size();
    bytes += source.document->FileSize();
  }
  std::string why;
  if (bytes > kTrcFileBytesMax) {
    PrintError("together the files have 4 GiB or more; give fewer of them");
    return false;
  }
  TrcWriter writer(TrcWriter::kBlockBytes);
  const auto look = [&](std::uint64_t written) {
    m_host.Progress().Show("Putting the files together...", written, traces);
    return !Interrupted();
  };
  const bool good = m_together.Create(&why) && m_together.HasRoomFor(bytes, &why) &&
                    writer.Create(m_together.Path(), &why) && writer.WriteHeader() &&
                    MergeTraces(documents, writer, look, &why);
  m_host.Progress().Clear();
  if (!writer.Finish() || !good) {
    PrintError("cannot put the files together: " + (why.empty() ? writer.Why() : why));
    return false;
  }
  if (Interrupted()) return false;
  for (Source& source : m_sources) source.document->m_traces.Clear();
  m_merged = OpenTraceFile(m_host, m_together.Path(), {}, "the files together");
  return m_merged != nullptr;
}

const std::string* TraceInput::OnlyPath() const {
  const Source& first = m_sources.front();
  return m_merged || !first.isNamed ? nullptr : &first.path;
}

bool TraceInput::IsUnchanged(const std::string& out) const {
  for (const Source& source : m_sources)
    if (!source.isPrivate && !::IsUnchanged(*source.document, source.path, out)) return false;
  return true;
}

int TraceInput::StatusWithDamage(int status) const {
  const bool isAnswer = status == kExitGood || status == kExitNo;
  if (isAnswer && m_cut) return kExitDamaged;
  for (const Source& source : m_sources) status = ::StatusWithDamage(*source.document, status);
  return status;
}

int TraceInput::StatusOfAnswer(int status) const {
  const bool isAnswer = status == kExitGood || status == kExitNo;
  if (isAnswer && !IsUnchanged()) return kExitDamaged;
  return StatusWithDamage(status);
}
