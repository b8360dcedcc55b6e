#include "interrupt.h"

#include <atomic>
#include <csignal>

namespace {

// No sig_atomic_t: the kernel may choose a working thread to run the handler on.
std::atomic<bool> g_interrupted{false};
static_assert(decltype(g_interrupted)::is_always_lock_free, "a handler may not wait");

void Note(int) {
  g_interrupted.store(true, std::memory_order_relaxed);
}

}  // namespace

void CatchSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  struct sigaction before = {};
  sigaction(SIGINT, nullptr, &before);
  if (before.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = Note;
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
}

bool Interrupted() {
  return g_interrupted.load(std::memory_order_relaxed);
}
