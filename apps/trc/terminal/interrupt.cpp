#include "terminal/interrupt.h"

#include <atomic>
#include <csignal>

namespace {

// The signal that was caught, 0 for none. Not a sig_atomic_t, because the kernel may run the
// handler on any thread.
std::atomic<int> g_noted{0};
static_assert(decltype(g_noted)::is_always_lock_free, "a handler may not wait");

void Note(int signal) {
  g_noted.store(signal, std::memory_order_relaxed);
}

void Catch(int signal) {
  struct sigaction before = {};
  sigaction(signal, nullptr, &before);
  if (before.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = Note;
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void CatchSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  Catch(SIGINT);
}

void CatchEndSignals() {
  Catch(SIGTERM);
  Catch(SIGHUP);
}

bool Interrupted() {
  return g_noted.load(std::memory_order_relaxed) != 0;
}

int InterruptedStatus() {
  constexpr int kBehindSignals = 128;
  return kBehindSignals + g_noted.load(std::memory_order_relaxed);
}
