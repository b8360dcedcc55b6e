#include "signal_pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <utility>

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

// Written by the handler, which may only call write.
volatile int g_writeEnd = -1;

extern "C" void OnSignal(int) {
  const int before = errno;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = write(g_writeEnd, &byte, 1);
  errno = before;
}

}  // namespace

SignalPipe::SignalPipe(std::function<void()> asked) : m_notify(std::move(asked)) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  m_readEnd = ends[0];
  g_writeEnd = ends[1];
  QCoreApplication::instance()->installEventFilter(this);
  auto* notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] { OnReadable(); });
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  for (const int signal : kSignals) {
    struct sigaction before = {};
    sigaction(signal, &action, &before);
    // Started by nohup: closing the terminal must have no effect.
    if (signal == SIGHUP && before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);
  }
}

SignalPipe::~SignalPipe() {
  if (m_readEnd < 0) return;
  for (const int signal : kSignals) std::signal(signal, SIG_DFL);
  close(std::exchange(m_readEnd, -1));
  close(g_writeEnd);
}

void SignalPipe::OnReadable() {
  char bytes[16];
  while (read(m_readEnd, bytes, sizeof bytes) > 0) m_asked = true;
  if (m_asked) m_notify();
}

bool SignalPipe::eventFilter(QObject* object, QEvent* event) {
  if (object != QCoreApplication::instance() || event->type() != QEvent::Quit) return false;
  m_asked = true;
  m_notify();
  return true;
}
