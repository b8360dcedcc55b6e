#include "quor/options/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "base/fail_with.h"

namespace {

constexpr std::size_t kShownBytes = 60;  // of a word or line in a fault
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // of some editors

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string_view WithoutComment(std::string_view line) {
  bool quoted = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    quoted = quoted != (line[at] == '"');
    const bool begins = at == 0 || kBlanks.find(line[at - 1]) != kBlanks.npos;
    if (line[at] == '#' && begins && !quoted) return line.substr(0, at);
  }
  return line;
}

bool HasControlBytes(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) < ' ' && byte != '\t') || byte == 0x7F;
  });
}

class Reader {
 public:
  explicit Reader(ConfigFile& to) : m_to(to) {}

  void Line(std::size_t number, std::string_view whole) {
    m_number = number;
    const std::string_view line = Trimmed(WithoutComment(whole));
    if (line.empty()) return;
    if (HasControlBytes(line)) return Fault("control characters are not known here");
    if (line.front() == '[') return Fault("sections are not known here: the words stand alone");
    const std::size_t sign = line.find('=');
    if (sign == line.npos) return Fault("\"" + Shown(line) + "\" is not WORD = VALUE");
    const std::string word(Trimmed(line.substr(0, sign)));
    std::string_view value = Trimmed(line.substr(sign + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
      value = value.substr(1, value.size() - 2);
    Option({word, std::string(value)});
  }

 private:
  void Option(GivenOption option) {
    if (option.word == "foreground" || option.word == "config")
      return Fault("\"" + option.word + "\" belongs to the command line");
    const ServiceWord* const known = FindServiceWord(option.word);
    if (!known) return Fault(WhyNotOption(Shown(option.word), "x"));
    const std::string why = WhyNotOption(option.word, option.value);
    if (!why.empty()) return Fault(option.word + ": " + why);
    if (known->isPath && option.value.front() != '/')
      return Fault(option.word + ": \"" + Shown(option.value) + "\" is not an absolute path");
    const auto [first, isNew] = m_lines.try_emplace(option.word, m_number);
    if (!isNew && !known->isRepeatable)
      return Fault(option.word + " stands already in line " + std::to_string(first->second));
    m_to.options.push_back(std::move(option));
  }
  static std::string Shown(std::string_view text) {
    return std::string(text.substr(0, kShownBytes)) + (text.size() > kShownBytes ? "..." : "");
  }
  void Fault(const std::string& text) {
    if (m_to.faults.size() < ConfigFile::kFaultsMax)
      m_to.faults.push_back("line " + std::to_string(m_number) + ": " + text);
  }

  ConfigFile& m_to;
  std::size_t m_number = 0;
  std::map<std::string, std::size_t> m_lines;  // where each word stands first
};

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

ConfigFile ConfigFile::Read(std::string_view text) {
  ConfigFile file;
  Reader reader(file);
  std::size_t number = 0;
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
    text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    reader.Line(++number, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return file;
}

std::optional<ConfigFile> ConfigFile::Open(const std::string& path, std::string* why) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    const int error = errno;
    if (file >= 0) close(file);
    return FailWith(why, path + ": " + SystemReason(error), std::nullopt);
  }
  std::string text(kBytesMax + 1, '\0');
  const ssize_t length = S_ISREG(status.st_mode) ? read(file, text.data(), text.size()) : -1;
  close(file);
  if (length < 0) return FailWith(why, path + ": is not a file that can be read", std::nullopt);
  if (static_cast<std::size_t>(length) > kBytesMax)
    return FailWith(why, path + ": is longer than 64 KiB", std::nullopt);
  if ((status.st_mode & 002) != 0 || (status.st_uid != 0 && status.st_uid != geteuid()))
    return FailWith(why, path + ": another user may change it", std::nullopt);
  return Read(std::string_view(text).substr(0, static_cast<std::size_t>(length)));
}

std::string UsualConfigPath() {
  if (std::string path = Variable("QUOR_CONFIG"); !path.empty()) return path;
  if (geteuid() == 0) return "/etc/quor/quord.conf";
  std::string folder = Variable("XDG_CONFIG_HOME");
  if (folder.empty()) folder = Variable("HOME") + "/.config";
  return folder + "/quor/quord.conf";
}
