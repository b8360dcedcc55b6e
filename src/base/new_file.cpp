#include "base/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kMostParts = 100;  // in one folder, of processes with one number

std::string SystemWords(int error) {
  return std::generic_category().message(error);
}

// The new file has the rights of the one whose place it takes.
void TakeRights(int descriptor, const OpenFile& from) {
  constexpr mode_t kRights = 0777;
  struct stat status;
  if (!from || fstat(from.Descriptor(), &status) != 0) return;
  [[maybe_unused]] const int owned = fchown(descriptor, status.st_uid, status.st_gid);
  fchmod(descriptor, status.st_mode & kRights);
}

}  // namespace

bool NewFile::Begin(const std::string& path, std::string* why) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status)) {
    m_writeTo = path;
    m_place = Place::Device;
    return true;
  }
  const fs::path target = fs::weakly_canonical(path, error);
  m_target = error ? path : target.string();
  if (fs::exists(status) && !(m_held = HoldForReplacing(m_target, why))) return false;
  return BeginBeside(why);
}

// A file of several names shall have the new bytes under each of them.
bool NewFile::KeepsItsPlace() const {
  struct stat status;
  return m_unfinished == Unfinished::Left && m_held && fstat(m_held.Descriptor(), &status) == 0 &&
         status.st_nlink > 1;
}

bool NewFile::BeginBeside(std::string* why) {
  const int descriptor = KeepsItsPlace() ? -1 : MakeBeside();
  if (descriptor >= 0) {
    TakeRights(descriptor, m_held);
    close(descriptor);
    m_place = Place::Beside;
    return true;
  }
  if (!m_held) {
    *why = SystemWords(errno);
    return false;
  }
  m_held.Close();  // its writer takes it
  m_writeTo = m_target;
  m_place = Place::There;
  return true;
}

// A name of its own: this program may write another file there, and one that was killed has left
// its own.
int NewFile::MakeBeside() {
  const std::string name = ".trc-" + std::to_string(static_cast<long>(getpid()));
  for (int number = 1;; ++number) {
    const std::string part = name + (number == 1 ? "" : "-" + std::to_string(number)) + ".part";
    m_writeTo = fs::path(m_target).replace_filename(part).string();
    const int descriptor =
        open(m_writeTo.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, m_held ? 0600 : 0666);
    if (descriptor >= 0 || errno != EEXIST || number == kMostParts) return descriptor;
  }
}

bool NewFile::Finish(std::string* why) {
  if (m_place == Place::Beside && rename(m_writeTo.c_str(), m_target.c_str()) != 0) {
    *why = SystemWords(errno);
    return false;
  }
  m_place = Place::None;
  return true;
}

NewFile::~NewFile() {
  if (m_place == Place::Beside) unlink(m_writeTo.c_str());
  if (m_place == Place::There && m_unfinished == Unfinished::Emptied) [[maybe_unused]]
    const int emptied = truncate(m_target.c_str(), 0);
}
