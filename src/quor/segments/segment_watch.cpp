#include "quor/segments/segment_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/fail_with.h"

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
  m_folder.Close();
}

void SegmentWatch::Await() {
  m_inotify.async_wait(OwnedDescriptor::wait_read, [this](const std::error_code& error) {
    if (error) return;
    Read();
    Await();
  });
}

void SegmentWatch::Read() {
  alignas(inotify_event) char bytes[16384];
  bool all = false, place = false;
  for (ssize_t got = 0;
       m_inotify.is_open() && (got = read(m_inotify.native_handle(), bytes, sizeof bytes)) > 0;) {
    for (const char* at = bytes; at < bytes + got;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      at += sizeof(inotify_event) + event->len;
      all = all || (event->mask & IN_Q_OVERFLOW) != 0;
      if (event->wd == m_place || event->len == 0)
        place = true;
      else if ((event->mask & IN_MOVED_TO) != 0 && event->name[0] != '.')
        m_finder.OnFile(event->name);
    }
  }
  if (all) ReportAll();
  if (all || place) m_finder.OnPlaceChanged();
}

void SegmentWatch::ReportAll() {
  for (const std::string& name : m_folder.Names()) m_finder.OnFile(name);
}
