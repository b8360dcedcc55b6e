#include "quor/log/log.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::size_t kLineBytesMax = 2000;  // a pipe that poll reports writable takes this much

LogLevel g_level = LogLevel::Info;
std::string g_name = "quord";
std::string g_file;  // where standard error goes; empty: not our file
std::uint64_t g_unwritten = 0;

constexpr std::array<std::pair<const char*, LogLevel>, 4> kLevelNames = {{
    {"error", LogLevel::Error},
    {"warning", LogLevel::Warning},
    {"info", LogLevel::Info},
    {"debug", LogLevel::Debug},
}};

// Programs inherit the variable, also when their standard error goes elsewhere. So it names the
// journal's stream by device and inode.
bool GoesToJournal() {
  const char* const stream = std::getenv("JOURNAL_STREAM");
  struct stat status {};
  if (!stream || fstat(STDERR_FILENO, &status) != 0) return false;
  return stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

std::string Head(LogLevel level) {
  // The journal adds the time itself and takes the level from the number.
  if (g_file.empty() && GoesToJournal()) return "<" + std::to_string(static_cast<int>(level)) + ">";
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  char text[40];
  const std::size_t length = strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ ", &utc);
  std::string head = std::string(text, length) + g_name + " ";
  for (const auto& [name, known] : kLevelNames)
    if (known == level) head += std::string(name) + ": ";
  return head;
}

bool OpenFile() {
  const int log = open(g_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (log < 0) return false;
  dup2(log, STDERR_FILENO);
  close(log);
  return true;
}

void RenewLargeFile() {
  struct stat status {};
  if (g_file.empty() || fstat(STDERR_FILENO, &status) != 0 || status.st_size < kLogFileBytesMax)
    return;
  if (std::rename(g_file.c_str(), (g_file + ".1").c_str()) == 0) OpenFile();
}

// A service that waits for the reader of its log would hold up all clients.
bool CanWrite() {
  pollfd ready{STDERR_FILENO, POLLOUT, 0};
  return poll(&ready, 1, 0) == 1 && (ready.revents & POLLOUT) != 0;
}

void WriteLine(LogLevel level, const std::string& text) {
  std::string line = (Head(level) + text).substr(0, kLineBytesMax);
  for (char& byte : line)
    if (static_cast<unsigned char>(byte) < ' ' || byte == 0x7F) byte = '?';
  line += '\n';
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

bool LogToFile(const std::string& path) {
  g_file = path;
  if (!OpenFile()) {
    g_file.clear();
    return false;
  }
  RenewLargeFile();
  return true;
}

std::optional<LogLevel> LogLevelOf(const std::string& name) {
  for (const auto& [known, level] : kLevelNames)
    if (name == known) return level;
  return std::nullopt;
}

void SetLogName(const std::string& name) {
  g_name = name;
}

void SetLogLevel(LogLevel level) {
  g_level = level;
}

void Log(LogLevel level, const std::string& text) {
  if (level > g_level) return;
  RenewLargeFile();
  if (!CanWrite()) {
    ++g_unwritten;
    return;
  }
  if (const std::uint64_t unwritten = std::exchange(g_unwritten, 0); unwritten > 0)
    WriteLine(LogLevel::Warning, std::to_string(unwritten) + " lines could not be written here");
  WriteLine(level, text);
}
