#include "quor/otlp/send/state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/fail_with.h"
#include "base/make_folder.h"

namespace {

bool WriteAll(int file, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t now = write(file, bytes.data() + done, bytes.size() - done);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) return false;
    done += static_cast<std::size_t>(now);
  }
  return fsync(file) == 0;
}

// A new name is on the disk when its folder is.
bool SyncFolder(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  const int file = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return false;
  const bool good = fsync(file) == 0;
  close(file);
  return good;
}

}  // namespace

StateFile::~StateFile() {
  if (m_lock >= 0) close(m_lock);
}

bool StateFile::Open(const std::string& path, std::string* bytes, std::string* why) {
  m_path = path;
  const std::string folder = std::filesystem::path(path).parent_path().string();
  if (!folder.empty() && !MakeFolder(folder, why)) return false;
  m_lock = open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (m_lock < 0) return FailOn(why, path + ".lock");
  if (flock(m_lock, LOCK_EX | LOCK_NB) != 0)
    return FailWith(why, path + ": another process uses it");
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return true;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream all;
  if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(all << file.rdbuf())))
    return FailOn(why, path);
  *bytes = all.str();
  return true;
}

bool StateFile::Write(const std::string& bytes, std::string* why) {
  const std::string part = m_path + ".part";
  const int file = open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0) return FailOn(why, part);
  const bool good = WriteAll(file, bytes);
  const int error = errno;
  close(file);
  errno = error;
  if (!good) return FailOn(why, part);
  if (std::rename(part.c_str(), m_path.c_str()) != 0 || !SyncFolder(m_path))
    return FailOn(why, m_path);
  return true;
}
