#include "quor/segments/segment_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "base/fail_with.h"

namespace {

// Files are reported for so long, and for so long when the caller waits for one of them.
constexpr std::chrono::milliseconds kTurn{2}, kLongTurn{50};
constexpr std::size_t kFoundMax = 4096;
constexpr int kReadsAtOnce = 8;
// A folder that is full of files takes long to list: at most a part of the time is spent on it.
constexpr int kListPauses = 20;
// Where descriptors are short, the folder cannot even be listed.
constexpr std::chrono::seconds kListAgain{1};

}  // namespace

bool SegmentWatch::Open(const std::string& socketPath, std::string* why) {
  Close();
  const int inotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  std::error_code error;
  if (inotify >= 0) m_inotify.assign(inotify, error);
  const int inotifyError = errno;
  m_place = inotify_add_watch(
      inotify, FolderOf(socketPath).c_str(),
      IN_DELETE_SELF | IN_MOVE_SELF | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO);
  if (m_inotify.is_open()) Await();
  if (!OpenFolder(m_folder, socketPath))
    return FailOn(why, "no place for segments beside " + socketPath);
  m_folder.RemoveUnfinished();
  // Watch before listing, so that no file is missed in between.
  const bool watched = WatchFolder();
  const int reason = inotify < 0 ? inotifyError : errno;
  ReportAll();
  return watched || FailWith(why, "new segments cannot be seen: " + SystemReason(reason));
}

// The kernel does not report the removal of a folder that is open. But whoever needs the folder
// next makes it again, in the folder of the socket.
bool SegmentWatch::WatchFolder() {
  char folder[40];
  std::snprintf(folder, sizeof folder, "/proc/self/fd/%d", m_folder.Descriptor());
  return m_inotify.is_open() && inotify_add_watch(m_inotify.native_handle(), folder,
                                                  IN_MOVED_TO | IN_MOVE_SELF | IN_ATTRIB) >= 0;
}

bool SegmentWatch::IsInPlace(const std::string& socketPath) const {
  SegmentFolder now;
  return !OpenFolder(now, socketPath) || now.IsSame(m_folder);
}

void SegmentWatch::Close() {
  std::error_code ignored;
  m_inotify.close(ignored);
  m_turn.cancel();
  m_found.clear();
  m_listsAgain = false;
  m_folder.Close();
}

void SegmentWatch::Await() {
  m_inotify.async_wait(OwnedDescriptor::wait_read, [this](const std::error_code& error) {
    if (error) return;
    Collect();
    TakeTurn(kTurn);
    Await();
  });
}

void SegmentWatch::Read() {
  Collect();
  TakeTurn(kLongTurn);
}

// What does not fit stays with the kernel, whose queue is bounded too.
void SegmentWatch::Collect() {
  alignas(inotify_event) char bytes[16384];
  bool all = false, place = false;
  for (int reads = 0; reads < kReadsAtOnce && m_found.size() < kFoundMax; ++reads) {
    const ssize_t got =
        m_inotify.is_open() ? read(m_inotify.native_handle(), bytes, sizeof bytes) : -1;
    if (got <= 0) break;
    for (const char* at = bytes; at < bytes + got;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      at += sizeof(inotify_event) + event->len;
      all = all || (event->mask & IN_Q_OVERFLOW) != 0;
      if (event->wd == m_place || event->len == 0)
        place = true;
      else if ((event->mask & IN_MOVED_TO) != 0 && event->name[0] != '.')
        m_found.emplace_back(event->name);
    }
  }
  m_listsAgain = m_listsAgain || all;
  if (all || place) m_finder.OnPlaceChanged();
}

void SegmentWatch::TakeTurn(Clock::duration time) {
  const Clock::time_point until = Clock::now() + time;
  do {
    if (m_found.empty() && m_listsAgain && Clock::now() >= m_listFrom) List();
    if (m_found.empty()) break;
    const std::string name = std::move(m_found.front());
    m_found.pop_front();
    m_finder.OnFile(name);
  } while (Clock::now() < until);
  if (!m_found.empty() || m_listsAgain) AwaitTurn();
}

void SegmentWatch::AwaitTurn() {
  m_turn.expires_at(m_found.empty() ? m_listFrom : Clock::now());
  m_turn.async_wait([this](const std::error_code& error) {
    if (!error) TakeTurn(kTurn);
  });
}

void SegmentWatch::List() {
  const Clock::time_point began = Clock::now();
  bool isWhole = false;
  for (std::string& name : m_folder.Names(&isWhole)) m_found.push_back(std::move(name));
  m_listsAgain = !isWhole;
  m_listFrom = Clock::now() + kListPauses * (Clock::now() - began);
  if (!isWhole) m_listFrom += kListAgain;
}

void SegmentWatch::ReportAllSoon() {
  m_listsAgain = true;
  AwaitTurn();
}

void SegmentWatch::ReportAll() {
  bool isWhole = false;
  for (const std::string& name : m_folder.Names(&isWhole)) m_finder.OnFile(name);
  if (isWhole || !m_folder.IsOpen()) return;
  m_listFrom = Clock::now() + kListAgain;
  ReportAllSoon();
}
