#include "quor/runtime/process/stack.h"

#include <limits.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "quor/runtime/process/loaded_module.h"

namespace {

constexpr int kFrames = 128;
constexpr std::size_t kModules = 32;
constexpr std::string_view kMore = "(more frames)";

struct Frame {
  std::uintptr_t address;
  bool interrupted;  // by a signal, before the instruction at the address
};

struct Frames {
  Frame at[kFrames];
  int count;
  bool more;
};

_Unwind_Reason_Code OnFrame(_Unwind_Context* context, void* to) {
  auto& frames = *static_cast<Frames*>(to);
  if (frames.count == kFrames) {
    frames.more = true;
    return _URC_END_OF_STACK;
  }
  int before = 0;
  const std::uintptr_t address = _Unwind_GetIPInfo(context, &before);
  // The end of a thread's stack.
  if (address != 0) frames.at[frames.count++] = {address, before != 0};
  return _URC_NO_REASON;
}

// The path of the program, read once. A replaced program's is that of the one it was started as.
char g_program[PATH_MAX];
enum ProgramState { kUnread, kBeingRead, kRead };
std::atomic<int> g_programState{kUnread};

__attribute__((noinline)) void ReadProgramPath() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return;
  std::string_view text(path, static_cast<std::size_t>(length));
  constexpr std::string_view kDeleted = " (deleted)";
  if (text.size() > kDeleted.size() && text.substr(text.size() - kDeleted.size()) == kDeleted)
    text.remove_suffix(kDeleted.size());
  int expected = kUnread;
  if (!g_programState.compare_exchange_strong(expected, kBeingRead)) return;
  std::memcpy(g_program, text.data(), text.size());
  g_programState.store(kRead, std::memory_order_release);
}

// "?" while another thread reads it; the build id is exact anyway.
std::string_view ProgramPath() {
  if (g_programState.load(std::memory_order_acquire) == kUnread) ReadProgramPath();
  return g_programState.load(std::memory_order_acquire) == kRead ? g_program : "?";
}

std::string_view NameOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? path : path.substr(slash + 1);
}

// A text in storage of a fixed size. What does not fit is left out and clears Fits().
class Line {
 public:
  Line(char* to, std::size_t size) : m_to(to), m_size(size) {}

  void Put(std::string_view text) {
    m_fits = m_fits && text.size() <= m_size - m_used;
    if (!m_fits) return;
    std::memcpy(m_to + m_used, text.data(), text.size());
    m_used += text.size();
  }
  void PutName(std::string_view text) {
    const std::size_t begin = m_used;
    Put(text);
    for (std::size_t i = begin; i < m_used; ++i)
      if (static_cast<unsigned char>(m_to[i]) < ' ' || m_to[i] == '\x7F') m_to[i] = '?';
  }
  void PutHex(std::uintptr_t number) {
    char digits[2 * sizeof number];
    char* first = digits + sizeof digits;
    do *--first = kDigits[number % 16];
    while ((number /= 16) != 0);
    Put({first, static_cast<std::size_t>(digits + sizeof digits - first)});
  }
  void PutBytes(const std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      const char pair[] = {kDigits[bytes[i] / 16], kDigits[bytes[i] % 16]};
      Put({pair, sizeof pair});
    }
  }
  bool Fits() const { return m_fits; }
  std::size_t Used() const { return m_used; }

 private:
  static constexpr char kDigits[] = "0123456789abcdef";
  char* const m_to;
  const std::size_t m_size;
  std::size_t m_used = 0;
  bool m_fits = true;
};

// The modules that earlier lines of the stack have named.
class Named {
 public:
  // Does the bare name stand for this module in the next line? If not, that line names it.
  bool IsKnown(const void* key, std::string_view name) {
    for (std::size_t i = m_count; i > 0; --i)
      if (m_modules[i - 1].name == name && m_modules[i - 1].key == key)
        return true;
      else if (m_modules[i - 1].name == name)
        break;
    // Without the memory of earlier lines a module is only named once more.
    if (m_count == kModules) m_count = 0;
    m_modules[m_count++] = {key, name};
    return false;
  }

 private:
  struct Module {
    const void* key;
    std::string_view name;
  };
  Module m_modules[kModules];
  std::size_t m_count = 0;
};

// Not inlined, so that stacks without such a path need no room for it.
__attribute__((noinline)) void PutWorkingFolder(Line& line) {
  char folder[PATH_MAX];
  if (!getcwd(folder, sizeof folder)) return;
  line.PutName(folder);
  line.Put("/");
}

// A library that was opened by a relative path is looked for from where the process is now.
void PutPath(Line& line, std::string_view path) {
  if (path.find('/') != path.npos && path[0] != '/') PutWorkingFolder(line);
  line.PutName(path);
}

void PutFrame(Line& line, const Frame& frame, Named& named) {
  LoadedModule module;
  // A return address may be behind the last instruction of its module.
  if (!FindModule(frame.address - (frame.interrupted ? 0 : 1), module)) {
    line.Put("0x");
    return line.PutHex(frame.address);
  }
  const std::string_view path = module.path[0] == '\0' ? ProgramPath() : module.path;
  const bool known = named.IsKnown(module.key, NameOf(path));
  if (known)
    line.PutName(NameOf(path));
  else
    PutPath(line, path);
  line.Put("+0x");
  line.PutHex(frame.address - module.bias);
  if (frame.interrupted) line.Put(" (interrupted)");
  if (known) return;
  line.Put(" [");
  if (module.buildIdBytes == 0) line.Put("no build id");
  line.PutBytes(module.buildId, module.buildIdBytes);
  line.Put("]");
}

}  // namespace

void PrimeStack() {
  ProgramPath();
  Frames frames;
  frames.count = 0;
  _Unwind_Backtrace(OnFrame, &frames);
}

std::size_t StackText(char* to, std::size_t size, const void* caller) {
  Frames frames;
  frames.count = 0;
  frames.more = false;
  _Unwind_Backtrace(OnFrame, &frames);
  int first = 0;
  while (first < frames.count &&
         frames.at[first].address != reinterpret_cast<std::uintptr_t>(caller))
    ++first;
  if (first == frames.count) first = 0;
  const std::size_t room = size > kMore.size() ? size - kMore.size() - 1 : 0;
  Named named;
  std::size_t used = 0;
  bool more = frames.more;
  for (int i = first; i < frames.count; ++i) {
    Line line(to + used, room - used);
    if (used != 0) line.Put("\n");
    PutFrame(line, frames.at[i], named);
    more = more || !line.Fits();
    if (!line.Fits()) break;
    used += line.Used();
  }
  if (!more || room == 0) return used;
  Line line(to + used, size - used);
  if (used != 0) line.Put("\n");
  line.Put(kMore);
  return used + line.Used();
}
