#include "views/kept_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "base/fail_with.h"
#include "notes/fingerprint.h"

namespace fs = std::filesystem;

namespace {

constexpr char kEnding[] = ".json", kPartEnding[] = ".part", kBroken[] = "broken-";
// A folder that somebody else has filled is not walked to its end.
constexpr std::size_t kEntriesMax = 10'000;
constexpr auto kPartAge = std::chrono::hours(24);

struct Entry {
  fs::path path;
  fs::file_time_type written;
};

// False: it has gone meanwhile, or is no file.
bool ReadEntry(const fs::directory_entry& each, Entry& entry) {
  std::error_code error;
  if (!each.is_regular_file(error) || each.is_symlink(error)) return false;
  entry = {each.path(), each.last_write_time(error)};
  return !error;
}

bool IsOf(const Entry& entry, const char* ending) {
  return entry.path.filename().string().ends_with(ending);
}

bool IsBroken(const Entry& entry) {
  return entry.path.filename().string().starts_with(kBroken);
}

std::vector<Entry> EntriesOf(const std::string& folder) {
  std::vector<Entry> entries;
  std::error_code error;
  fs::directory_iterator each(folder, error);
  for (; !error && each != fs::directory_iterator() && entries.size() < kEntriesMax;
       each.increment(error)) {
    Entry entry;
    if (ReadEntry(*each, entry)) entries.push_back(std::move(entry));
  }
  return entries;
}

bool ReadAll(int descriptor, std::string& text) {
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t got = read(descriptor, text.data() + filled, text.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  text.resize(filled);
  return true;
}

}  // namespace

std::string KeptFiles::PathOf(const std::string& key) const {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(key.data());
  char name[32];
  std::snprintf(name, sizeof name, "/%016llx%s",
                static_cast<unsigned long long>(PrintOf({bytes, key.size()})), kEnding);
  return m_folder + name;
}

KeptFiles::Found KeptFiles::Read(const std::string& key, std::string& text,
                                 std::string* why) const {
  return ReadPath(PathOf(key), text, why);
}

KeptFiles::Found KeptFiles::ReadPath(const std::string& path, std::string& text,
                                     std::string* why) const {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
  const int descriptor = open(path.c_str(), kFlags);
  if (descriptor < 0 && (errno == ENOENT || errno == ENOTDIR)) return Found::Nothing;
  struct stat status = {};
  const bool regular =
      descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  const bool fits = regular && static_cast<std::size_t>(status.st_size) <= m_mostBytes;
  text.assign(fits ? static_cast<std::size_t>(status.st_size) : 0, '\0');
  const bool read = fits && ReadAll(descriptor, text);
  const std::string reason = !regular ? "no file that can be read" : SystemReason();
  if (descriptor >= 0) close(descriptor);
  if (read) return Found::Text;
  FailWith(why, path + ": " + (regular && !fits ? "too long" : reason));
  return Found::Unreadable;
}

bool KeptFiles::Write(const std::string& key, std::string_view text, std::string* why,
                      const NotesSteps& steps) const {
  const fs::path folder(m_folder);
  std::error_code ignored;
  fs::create_directories(folder.parent_path(), ignored);
  if (mkdir(m_folder.c_str(), 0700) != 0 && errno != EEXIST) return FailOn(why, m_folder);
  const std::string path = PathOf(key);
  // The rights are those of the folder.
  if (!ReplaceNotes(path, m_folder, text, why, steps)) return false;
  RemoveOldest(path);
  return true;
}

void KeptFiles::PutAside(const std::string& key, const std::string& text) const {
  std::string now;
  if (Read(key, now, nullptr) == Found::Nothing || now != text) return;
  const fs::path path = PathOf(key);
  const fs::path aside = path.parent_path() / (kBroken + path.filename().string());
  rename(path.c_str(), aside.c_str());
}

void KeptFiles::RemoveOldest(const std::string& path) const {
  const auto now = fs::file_time_type::clock::now();
  std::vector<Entry> files, broken;
  for (Entry& entry : EntriesOf(m_folder)) {
    // A process that was killed has left it.
    if (IsOf(entry, kPartEnding) && now - entry.written > kPartAge) unlink(entry.path.c_str());
    if (!IsOf(entry, kEnding) || entry.path == path) continue;
    (IsBroken(entry) ? broken : files).push_back(std::move(entry));
  }
  const auto drop = [](std::vector<Entry>& entries, std::size_t most) {
    std::ranges::sort(entries, std::ranges::greater(), &Entry::written);
    for (std::size_t i = most; i < entries.size(); ++i) unlink(entries[i].path.c_str());
  };
  drop(files, m_mostFiles - 1);
  drop(broken, m_mostFiles);
}

void KeptFiles::ForEach(const Visit& visit) const {
  std::string text;
  for (const Entry& entry : EntriesOf(m_folder))
    if (IsOf(entry, kEnding) && !IsBroken(entry) &&
        ReadPath(entry.path.string(), text, nullptr) == Found::Text)
      visit(entry.path.string(), text);
}
