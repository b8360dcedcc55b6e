#include "base/fault_guard.h"

#include <errno.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <mutex>

// An entry of a list that only grows. Entries are reused, never freed, so that the handler can walk
// the list at any moment. A free entry has an empty range.
struct FaultGuard::Range {
  std::atomic<bool> taken = true;
  std::atomic<std::uintptr_t> begin = 0;
  std::atomic<std::uintptr_t> end = 0;
  std::atomic<int> rights = PROT_READ;
  std::atomic<bool> lost = false;
  // The middle one of three pages; its access rights differ from its neighbours'. If it gets the
  // same rights, the three become one mapping, and the process may make two more. 0: could not be
  // made.
  std::uintptr_t spare = 0;
  Range* next = nullptr;
};

namespace {

std::atomic<FaultGuard::Range*> g_ranges = nullptr;
struct sigaction g_previous;
std::uintptr_t g_pageBytes;

// Of a 32-bit processor, whose older call takes its arguments from memory.
#ifdef SYS_mmap2
constexpr long kMap = SYS_mmap2;
#else
constexpr long kMap = SYS_mmap;
#endif

// By a raw system call: a sanitizer's mmap must not be called in a signal handler.
bool MapZeros(std::uintptr_t begin, std::size_t bytes, int rights) {
  return syscall(kMap, begin, bytes, rights, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) ==
         static_cast<long>(begin);
}

bool Protect(std::uintptr_t page, int rights) {
  return syscall(SYS_mprotect, page, g_pageBytes, rights) == 0;
}

void MakeSpare(FaultGuard::Range& range) {
  if (range.spare == 0) {
    void* const pages =
        mmap(nullptr, 3 * g_pageBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return;
    range.spare = reinterpret_cast<std::uintptr_t>(pages) + g_pageBytes;
  }
  Protect(range.spare, PROT_READ);
}

bool ReplacePage(std::uintptr_t address) {
  for (FaultGuard::Range* range = g_ranges.load(); range; range = range->next) {
    const std::uintptr_t begin = range->begin.load();
    const std::uintptr_t end = range->end.load();
    // Read twice: an entry that was reused in between must not show a mixed range.
    if (address < begin || address >= end || begin != range->begin.load()) continue;
    const std::uintptr_t page = address & ~(g_pageBytes - 1);
    const int rights = range->rights.load();
    range->lost.store(true);
    if (MapZeros(page, g_pageBytes, rights)) return true;
    // The kernel limits the mappings of a process. At the limit the rest is replaced as one
    // mapping. Separating it from the part before it also takes a mapping.
    return MapZeros(page, end - page, rights) ||
           (range->spare != 0 && Protect(range->spare, PROT_NONE) &&
            MapZeros(page, end - page, rights));
  }
  return false;
}

void PassOn(int signal, siginfo_t* info, void* context) {
  if (g_previous.sa_flags & SA_SIGINFO) {
    g_previous.sa_sigaction(signal, info, context);
  } else if (g_previous.sa_handler == SIG_IGN && info->si_code <= 0) {
    // Sent by a process, and to be ignored.
  } else if (g_previous.sa_handler != SIG_DFL && g_previous.sa_handler != SIG_IGN) {
    g_previous.sa_handler(signal);
  } else {
    // Ends the program: a fault recurs as soon as this returns, a sent signal recurs by the raise.
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, nullptr);
    if (info->si_code <= 0) raise(signal);
  }
}

void OnBusError(int signal, siginfo_t* info, void* context) {
  const int error = errno;
  const bool fault = info->si_code > 0;
  if (!fault || !ReplacePage(reinterpret_cast<std::uintptr_t>(info->si_addr))) {
    PassOn(signal, info, context);
  }
  errno = error;
}

void InstallHandler() {
  static std::once_flag once;
  std::call_once(once, [] {
    g_pageBytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    sigaction(SIGBUS, nullptr, &g_previous);
    struct sigaction ours = {};
    ours.sa_sigaction = OnBusError;
    ours.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigemptyset(&ours.sa_mask);
    sigaction(SIGBUS, &ours, nullptr);
  });
}

FaultGuard::Range* TakeEntry() {
  for (FaultGuard::Range* range = g_ranges.load(); range; range = range->next) {
    bool taken = false;
    if (range->taken.compare_exchange_strong(taken, true)) return range;
  }
  auto* range = new FaultGuard::Range;
  range->next = g_ranges.load();
  while (!g_ranges.compare_exchange_weak(range->next, range)) {
  }
  return range;
}

}  // namespace

FaultGuard::FaultGuard(const void* begin, std::size_t bytes, Access access) {
  InstallHandler();
  m_range = TakeEntry();
  m_range->rights.store(access == Access::Write ? PROT_READ | PROT_WRITE : PROT_READ);
  m_range->lost.store(false);
  MakeSpare(*m_range);
  const auto from = reinterpret_cast<std::uintptr_t>(begin);
  m_range->begin.store(from);
  m_range->end.store(from + bytes);
}

FaultGuard& FaultGuard::operator=(FaultGuard&& other) noexcept {
  if (this != &other) {
    Release();
    m_range = std::exchange(other.m_range, nullptr);
  }
  return *this;
}

bool FaultGuard::LostPages() const {
  return m_range && m_range->lost.load();
}

void FaultGuard::Release() {
  if (!m_range) return;
  m_range->end.store(0);
  m_range->begin.store(0);
  m_range->taken.store(false);
  m_range = nullptr;
}
