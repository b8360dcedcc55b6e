#include "quor/log/log.h"

#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace {

LogLevel g_level = LogLevel::Info;

constexpr std::array<std::pair<const char*, LogLevel>, 4> kWords = {{
    {"error", LogLevel::Error},
    {"warning", LogLevel::Warning},
    {"info", LogLevel::Info},
    {"debug", LogLevel::Debug},
}};

std::string Head(LogLevel level) {
  // The journal adds the time itself and takes the level from the number.
  static const bool journal = std::getenv("JOURNAL_STREAM") != nullptr;
  if (journal) return "<" + std::to_string(static_cast<int>(level)) + ">";
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  char text[40];
  const std::size_t length = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ quord ", &utc);
  std::string head(text, length);
  for (const auto& [word, known] : kWords)
    if (known == level) head += std::string(word) + ": ";
  return head;
}

}  // namespace

std::optional<LogLevel> LogLevelOf(const std::string& word) {
  for (const auto& [known, level] : kWords)
    if (word == known) return level;
  return std::nullopt;
}

void SetLogLevel(LogLevel level) {
  g_level = level;
}

void Log(LogLevel level, const std::string& text) {
  if (level > g_level) return;
  std::string line = Head(level) + text;
  for (char& byte : line)
    if (static_cast<unsigned char>(byte) < ' ' || byte == 0x7F) byte = '?';
  line += '\n';
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}
