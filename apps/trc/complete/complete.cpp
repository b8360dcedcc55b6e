#include "complete/complete.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "complete/known_names.h"
#include "complete/shell_line.h"
#include "terminal/exit_status.h"

namespace {

void EndInTime() {
  struct sigaction action {};
  action.sa_handler = [](int) { _exit(kExitGood); };
  sigaction(SIGALRM, &action, nullptr);
  const char* const text = getenv("TRC_COMPLETION_MS");
  const int wanted = text ? atoi(text) : 0;
  const int milliseconds = wanted > 0 ? std::min(wanted, kCompleteLimitMaxMs) : kCompleteLimitMs;
  const itimerval limit{{}, {milliseconds / 1000, milliseconds % 1000 * 1000}};
  setitimer(ITIMER_REAL, &limit, nullptr);
}

std::string Lines(const std::vector<std::string>& words) {
  std::string lines;
  for (const std::string& word : words) lines.append(word).push_back('\n');
  return lines;
}

void WriteAll(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t written = write(STDOUT_FILENO, text.data() + at, text.size() - at);
    if (written <= 0) return;
    at += static_cast<std::size_t>(written);
  }
}

}  // namespace

bool IsCompletion(int argc, const char* const* argv) {
  return argc > 2 && strcmp(argv[1], "complete") == 0 &&
         (strcmp(argv[2], "--") == 0 || strcmp(argv[2], "--bash") == 0);
}

int RunCompletion(int argc, const char* const* argv) {
  EndInTime();
  setenv("QUOR_AUTOSTART", "0", 1);
  KnownNames names;
  std::string answer;
  if (strcmp(argv[2], "--") == 0)
    answer = Lines(CompleteWords({argv + 3, argv + argc}, names));
  else if (const auto line = ReadShellLine(argc > 3 ? argv[3] : "", argc > 4 ? argv[4] : ""))
    answer = Lines(QuotedForBash(CompleteWords(line->words, names), *line));
  WriteAll(answer);
  // At once: the connection to a service has threads that need not end.
  _exit(kExitGood);
}
