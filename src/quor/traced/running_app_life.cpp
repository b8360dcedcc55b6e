// How an instance learns that its owner has ended, or that the owner lives without a link.
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "quor/log/log.h"
#include "quor/traced/running_app.h"

namespace {

using std::chrono::milliseconds;
// The lock is checked while there is no link, and after the end of the process: soon after a
// reason, and then at growing intervals.
constexpr milliseconds kFirstLook{2}, kLastLook{1000};
constexpr int kQuickLooks = 6;
// An application that can link has done so by then. An application that has given up its user or
// its root never will.
constexpr milliseconds kLinkPatience{2000};

}  // namespace

void RunningApp::WatchProcess() {
  m_dead = m_app.Segment().OwnerIsGone();
  if (m_dead) return;
  const int process =
      static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(m_app.Pid()), 0u));
  std::error_code error;
  if (process >= 0) m_process.assign(process, error);
  if (process >= 0 && !error) return AwaitEndOfProcess();
  // It has just ended, or is not visible from here: only the lock tells.
  m_processEnded = true;
  CheckOwnerLock();
}

void RunningApp::AwaitEndOfProcess() {
  m_process.async_wait(OwnedDescriptor::wait_read,
                       [self = shared_from_this()](const std::error_code& failed) {
                         if (failed || self->m_ended) return;
                         // A wait may end with an event for a descriptor that had this number
                         // before.
                         pollfd process{self->m_process.native_handle(), POLLIN, 0};
                         if (poll(&process, 1, 0) != 1) return self->AwaitEndOfProcess();
                         self->m_processEnded = true;
                         self->m_looks = 0;
                         self->CheckOwnerLock();
                       });
}

void RunningApp::CheckOwnerLock() {
  if (m_ended || m_dead) return;
  if (m_app.Segment().OwnerIsGone()) {
    m_dead = true;
    m_timer.cancel();
    m_look.cancel();
    if (!m_isHeldBack) Pump();
    return;
  }
  // A copy that a fork is just making, or a copy that does not know of us, holds the lock a little
  // longer, and may trace. The process may be another one, in another namespace: without a link
  // only the lock tells.
  if (m_socket.is_open() ? !m_processEnded : !ReadWithoutLink()) return;
  m_look.expires_after(std::min(kFirstLook * (1 << std::min(2 * m_looks, 16)), kLastLook));
  ++m_looks;
  m_look.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error) self->CheckOwnerLock();
  });
}

// `soon`: there is a reason to look.
void RunningApp::CheckLockWithoutLink(bool soon) {
  m_unlinkedSince = std::chrono::steady_clock::now();
  m_looks = soon ? 0 : kQuickLooks;
  CheckOwnerLock();
}

// False: the instance has ended.
bool RunningApp::ReadWithoutLink() {
  if (m_readsWithoutLink) return ReadPoints();
  const auto unlinked = std::chrono::steady_clock::now() - m_unlinkedSince;
  if (m_isHeldBack || unlinked < kLinkPatience || !m_app.Claim()) return true;
  Log(LogLevel::Info,
      "application " + m_app.Name() + " (" + std::to_string(Pid()) + ") is read without a link");
  m_readsWithoutLink = true;
  SetBegun();
  m_app.Begin();
  m_timer.cancel();
  Pump();
  return !m_ended;
}

void RunningApp::SetBegun() {
  if (!std::exchange(m_hasBegun, true)) m_host.OnBegan(*this);
}

// Called before anything is sent over a link, because a sink may order the application to take.
void RunningApp::EndWithoutLink() {
  if (!m_processEnded) m_look.cancel();
  if (std::exchange(m_readsWithoutLink, false)) m_app.Pause();
  // Also a claim of a service that was killed.
  m_app.LeaveClaim();
}
