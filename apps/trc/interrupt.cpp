#include "interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void Note(int) {
  g_interrupted = 1;
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
  return g_interrupted != 0;
}
