#include "input/file_watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

namespace {

// Not every file system reports what other machines do.
constexpr int kPollMs = 1000;
// A program that writes byte by byte costs this many looks a second.
constexpr int kRestMs = 5;

}  // namespace

// True the first time.
bool FileWatch::Begin() {
  if (std::exchange(m_begun, true)) return false;
  m_notes = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  const std::string folder = std::filesystem::path(m_path).parent_path().string();
  inotify_add_watch(m_notes, folder.empty() ? "." : folder.c_str(),
                    IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE);
  return true;
}

FileWatch::~FileWatch() {
  if (m_notes >= 0) close(m_notes);
}

void FileWatch::Follow(int descriptor) {
  Begin();
  if (m_file >= 0) inotify_rm_watch(m_notes, m_file);
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  m_file = inotify_add_watch(m_notes, path.c_str(), IN_MODIFY | IN_ATTRIB);
}

bool FileWatch::Wait() {
  // What happened before it was watched for is to be looked at.
  if (Begin()) return true;
  pollfd ends[] = {{STDOUT_FILENO, 0, 0}, {m_notes, POLLIN, 0}};
  const int ready = poll(ends, 2, kPollMs);
  if (ready > 0 && ends[0].revents != 0) return false;
  if (ready > 0 && poll(ends, 1, kRestMs) > 0) return false;
  char notes[4096];
  while (m_notes >= 0 && read(m_notes, notes, sizeof notes) > 0) {
  }
  return true;
}
