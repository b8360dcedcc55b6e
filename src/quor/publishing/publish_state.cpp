#include "quor/publishing/publish_state.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "base/fail_with.h"
#include "base/make_folder.h"

namespace {

constexpr const char* kTitle = "quor-bridge publish 1";
constexpr std::size_t kIdBytes = 16;

std::string ToHex(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text.push_back(kDigits[static_cast<std::uint8_t>(byte) >> 4]);
    text.push_back(kDigits[static_cast<std::uint8_t>(byte) & 15]);
  }
  return text;
}

bool ReadId(const std::string& text, std::string& id) {
  if (text.size() != 2 * kIdBytes || text.find_first_not_of("0123456789abcdef") != text.npos)
    return false;
  id.clear();
  for (std::size_t i = 0; i < text.size(); i += 2)
    id.push_back(static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16)));
  return true;
}

std::string Written(const PublishState& state) {
  std::ostringstream text;
  text << kTitle << "\nto " << state.engineStream << "\nstream " << ToHex(state.kept.stream)
       << " frames " << state.kept.frames << " highest " << state.kept.highest << '\n';
  for (const std::string& source : state.sources) text << "source " << source << '\n';
  text << "end\n";
  return text.str();
}

// The last line shows that the file is whole.
bool Read(std::istream& from, PublishState& state) {
  std::string line, word, id, frames, highest;
  if (!std::getline(from, line) || line != kTitle) return false;
  if (!std::getline(from, line) || line.rfind("to ", 0) != 0) return false;
  state.engineStream = line.substr(3);
  if (!(from >> word >> id >> frames >> state.kept.frames >> highest >> state.kept.highest) ||
      word != "stream" || frames != "frames" || highest != "highest" ||
      !ReadId(id, state.kept.stream) || !std::getline(from, line) || !line.empty())
    return false;
  while (std::getline(from, line) && line.rfind("source ", 0) == 0)
    state.sources.push_back(line.substr(7));
  return line == "end";
}

bool WriteTo(const std::string& path, const std::string& text, std::string* why) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (file < 0) return FailOn(why, path);
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t wrote = write(file, text.data() + done, text.size() - done);
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) break;
    done += static_cast<std::size_t>(wrote);
  }
  const bool whole = done == text.size() || FailOn(why, path);
  close(file);
  return whole;
}

}  // namespace

PublishStateFile::~PublishStateFile() {
  if (m_lock >= 0) close(m_lock);
}

bool PublishStateFile::Open(const std::string& path, PublishState* state, std::string* damage,
                            std::string* why) {
  m_path = path;
  const std::size_t slash = path.rfind('/');
  if (slash != path.npos && slash > 0 && !MakeFolder(path.substr(0, slash), why)) return false;
  const std::string lock = path + ".lock";
  m_lock = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (m_lock < 0) return FailOn(why, lock);
  if (flock(m_lock, LOCK_EX | LOCK_NB) != 0)
    return FailWith(why, path + ": another process publishes by it");
  std::ifstream file(path);
  PublishState read;
  if (!file)
    damage->clear();
  else if (Read(file, read))
    *state = std::move(read);
  else
    *damage = path + " cannot be read";
  return true;
}

// It need not be on the disk: what ends the system also ends the service, whose stream it names.
bool PublishStateFile::Save(const PublishState& state, std::string* why) const {
  const std::string part = m_path + ".new";
  if (!WriteTo(part, Written(state), why)) return false;
  return std::rename(part.c_str(), m_path.c_str()) == 0 || FailOn(why, m_path);
}
