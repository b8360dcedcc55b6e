#include "quor/runtime/process/stack.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kFrames = 128;

// Does the kernel return to this code from a signal handler? The C library's code is
// `mov $15, %rax; syscall`. A stack that contains it was taken inside a handler.
bool IsSignalReturn(const void* code) {
#if defined(__x86_64__)
  static const unsigned char kReturn[] = {0x48, 0xC7, 0xC0, 0x0F, 0, 0, 0, 0x0F, 0x05};
  // Byte by byte, only as far as it agrees, because the code may end with its page.
  const auto* const bytes = static_cast<const unsigned char*>(code);
  for (std::size_t i = 0; i < sizeof kReturn; ++i)
    if (bytes[i] != kReturn[i]) return false;
  return true;
#else
  (void)code;
  return true;
#endif
}

const char* BaseName(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

int PrintFrame(char* to, std::size_t size, void* address, bool readable) {
  Dl_info info{};
  if (dladdr(address, &info) == 0 || !info.dli_fname) return std::snprintf(to, size, "%p", address);
  const char* const module = BaseName(info.dli_fname);
  const auto place = reinterpret_cast<std::uintptr_t>(address);
  if (!info.dli_sname)
    return std::snprintf(to, size, "%s+0x%zx", module,
                         place - reinterpret_cast<std::uintptr_t>(info.dli_fbase));
  char* const name =
      readable ? abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, nullptr) : nullptr;
  const int length =
      std::snprintf(to, size, "%s+0x%zx (%s)", name ? name : info.dli_sname,
                    place - reinterpret_cast<std::uintptr_t>(info.dli_saddr), module);
  std::free(name);
  return length;
}

}  // namespace

void PrimeStack() {
  void* frame = nullptr;
  backtrace(&frame, 1);
}

std::size_t StackText(char* to, std::size_t size, const void* caller) {
  void* frames[kFrames];
  const int count = backtrace(frames, kFrames);
  bool readable = true;
  for (int i = 0; i < count; ++i) readable = readable && !IsSignalReturn(frames[i]);
  int first = 0;
  while (first < count && frames[first] != caller) ++first;
  std::size_t used = 0;
  for (int i = first == count ? 0 : first; i < count; ++i) {
    const std::size_t before = used;
    if (used != 0 && used + 1 < size) to[used++] = '\n';
    const int length = PrintFrame(to + used, size - used, frames[i], readable);
    if (length < 0 || static_cast<std::size_t>(length) >= size - used) return before;
    used += static_cast<std::size_t>(length);
  }
  return used;
}
