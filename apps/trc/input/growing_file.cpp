#include "input/growing_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "base/fail_with.h"
#include "input/whole_records.h"

namespace {

constexpr int kStyles = 3;
// The files may be numbered while their names are looked at.
constexpr int kAttempts = 5;

std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool IsOneFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool IsOneFile(const std::optional<struct stat>& one, const struct stat& other) {
  return one && IsOneFile(*one, other);
}

bool IsEarlier(const timespec& one, const timespec& other) {
  return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

bool IsUnwritten(const struct stat& before, const struct stat& now) {
  return before.st_size == now.st_size && before.st_mtim.tv_sec == now.st_mtim.tv_sec &&
         before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

bool BeginsBlank(Bytes bytes) {
  const Bytes begin = bytes.first(std::min(bytes.size(), kTrcHeaderBytes));
  return !begin.empty() &&
         std::all_of(begin.begin(), begin.end(), [](std::uint8_t byte) { return byte == 0; });
}

// A FIFO under the name must not hold us up.
int OpenToRead(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
}

}  // namespace

void GrowingFile::Close() {
  if (m_file >= 0) close(m_file);
  m_file = -1;
}

bool GrowingFile::Adopt(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file);
    return false;
  }
  Close();
  m_file = file;
  m_status = status;
  Restart();
  return true;
}

void GrowingFile::Restart() {
  m_position = m_tailEnd = 0;
  m_head.clear();
  m_tail.clear();
  m_piece = {};
  m_blank = false;
}

GrowingFile::Opened GrowingFile::Open(std::string* why) {
  const int file = OpenToRead(m_path);
  if (file < 0 && errno == ENOENT) return Opened::None;
  if (file < 0) return FailWith(why, SystemReason(), Opened::Bad);
  return Adopt(file) ? Opened::Yes : FailWith(why, "Not a regular file", Opened::Bad);
}

// The name is looked at before the file is read: what a program wrote before it gave the name to
// another file is then in what is read.
GrowingFile::Seen GrowingFile::Read(std::string* why) {
  if (!m_buffer) m_buffer = std::make_unique<std::uint8_t[]>(kPieceBytes);
  m_named = StatusOf(m_path);
  const ssize_t count = pread(m_file, m_buffer.get(), kPieceBytes, static_cast<off_t>(m_position));
  if (count < 0) return FailWith(why, SystemReason(), Seen::Bad);
  if (!IsSame()) {
    Restart();
    return Seen::Anew;
  }
  m_piece = {m_buffer.get(), static_cast<std::size_t>(count)};
  if (m_position > 0) return Seen::Good;
  m_blank = BeginsBlank(m_piece);
  if (m_blank) m_piece = {};
  switch (BeginOfTrc(m_piece, why)) {
    case TrcBegin::Bad:
      return Seen::Bad;
    case TrcBegin::Short:
      m_piece = {};
      return Seen::Good;
    default:
      Take(kTrcHeaderBytes);
      return Seen::Good;
  }
}

bool GrowingFile::HasAt(std::uint64_t position, const std::string& bytes) const {
  char there[std::max(kHeadBytes, kTailBytes)];
  const ssize_t count = pread(m_file, there, bytes.size(), static_cast<off_t>(position));
  return std::string_view(there, static_cast<std::size_t>(std::max<ssize_t>(count, 0))) == bytes;
}

// A file may be cut and written again to more than its old size between two looks, so its size does
// not tell.
bool GrowingFile::IsSame() {
  struct stat now {};
  if (fstat(m_file, &now) != 0) return true;
  const bool unwritten = IsUnwritten(m_status, now);
  m_status = now;
  return unwritten || (HasAt(0, m_head) && HasAt(m_tailEnd - m_tail.size(), m_tail));
}

void GrowingFile::Take(std::size_t bytes) {
  if (bytes == 0) return;
  const std::string_view taken(reinterpret_cast<const char*>(m_piece.data()), bytes);
  if (m_head.size() == m_position && m_head.size() < kHeadBytes)
    m_head += taken.substr(0, kHeadBytes - m_head.size());
  if (m_position + bytes > m_tailEnd) {
    if (m_position != m_tailEnd) m_tail.clear();
    m_tail += taken.substr(taken.size() - std::min(taken.size(), kTailBytes));
    m_tail.erase(0, m_tail.size() - std::min(m_tail.size(), kTailBytes));
    m_tailEnd = m_position + bytes;
  }
  m_position += bytes;
  m_piece = m_piece.subspan(bytes);
}

// The last bytes that were taken stay known: the file may be cut before it is read that far again.
void GrowingFile::Rewind() {
  m_position = std::min<std::uint64_t>(m_position, kTrcHeaderBytes);
  m_piece = {};
}

std::string GrowingFile::Numbered(const Place& place) const {
  const std::string number = "." + std::to_string(place.number);
  if (place.style == 1) return m_path + number + ".trc";
  if (place.style == 2) return m_path + number;
  const std::string extension = std::filesystem::path(m_path).extension().string();
  return m_path.substr(0, m_path.size() - extension.size()) + number + extension;
}

// Where the file that is read stands now. While files are numbered, one number is missing.
std::optional<GrowingFile::Place> GrowingFile::FindNumbered() const {
  for (Place place{0, 1}; place.style < kStyles; ++place.style) {
    int missing = 0;
    for (place.number = 1; missing < 2; ++place.number) {
      const auto status = StatusOf(Numbered(place));
      if (IsOneFile(status, m_status)) return place;
      missing = status ? 0 : missing + 1;
    }
  }
  return std::nullopt;
}

// The oldest numbered file that was written after the one that is read.
std::optional<GrowingFile::Place> GrowingFile::OldestLater() const {
  for (Place place{0, 1}; place.style < kStyles; ++place.style) {
    place.number = 0;
    while (true) {
      const auto status = StatusOf(Numbered({place.style, place.number + 1}));
      if (!status || !IsEarlier(m_status.st_mtim, status->st_mtim)) break;
      ++place.number;
    }
    if (place.number > 0) return place;
  }
  return std::nullopt;
}

GrowingFile::Moved GrowingFile::MoveTo(const std::string& path, Moved how, std::string* why) {
  const int file = OpenToRead(path);
  if (file < 0 && errno == ENOENT) return Moved::Away;
  if (file < 0) return FailWith(why, SystemReason(), Moved::Bad);
  return Adopt(file) ? how : FailWith(why, "Not a regular file", Moved::Bad);
}

GrowingFile::Moved GrowingFile::MoveOn(std::string* why) {
  if (IsOneFile(m_named, m_status)) return Moved::No;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const std::optional<Place> place = FindNumbered();
    if (!place) {
      if (!m_named) return Moved::Away;
      // It may have been numbered since its name was looked at.
      if (fstat(m_file, &m_status) != 0 || m_status.st_nlink > 0)
        return MoveTo(m_path, Moved::Replaced, why);
      const std::optional<Place> later = OldestLater();
      return later ? MoveTo(Numbered(*later), Moved::Later, why)
                   : MoveTo(m_path, Moved::Replaced, why);
    }
    const std::string next =
        place->number == 1 ? m_path : Numbered({place->style, place->number - 1});
    const struct stat old = m_status;
    const std::optional<struct stat> status = StatusOf(next);
    if (!status && place->number == 1) return Moved::Away;
    if (!status || IsOneFile(*status, old) || !IsOneFile(StatusOf(Numbered(*place)), old)) continue;
    const int file = OpenToRead(next);
    struct stat opened {};
    if (file >= 0 && fstat(file, &opened) == 0 && IsOneFile(*status, opened) &&
        IsOneFile(StatusOf(Numbered(*place)), old))
      return Adopt(file) ? Moved::Next : FailWith(why, "Not a regular file", Moved::Bad);
    if (file >= 0) close(file);
  }
  return Moved::No;
}
