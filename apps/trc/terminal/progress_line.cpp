#include "terminal/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "base/text.h"
#include "terminal/harmless_text.h"

namespace {

// A caption may have a long path in it. It must leave the terminal's line with room for the part
// that is done, because only the last line can be erased.
std::string FittingText(std::string_view caption) {
  constexpr std::size_t kDoneColumns = 7;  // " 100 %", and the cursor
  constexpr std::string_view kCut = "...";
  std::string text = HarmlessText(caption);
  std::replace(text.begin(), text.end(), '\n', ' ');
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return text;
  // No character of UTF-8 has more columns than bytes.
  const std::size_t room = size.ws_col - std::min<std::size_t>(size.ws_col, kDoneColumns);
  if (text.size() <= room) return text;
  text = CutUtf8(text, room - std::min(room, kCut.size()));
  return text.append(kCut.substr(0, room));
}

}  // namespace

ProgressLine::ProgressLine()
    : m_terminal(isatty(STDERR_FILENO) != 0), m_next(Clock::now() + kPeriod) {}

void ProgressLine::Show(std::string_view caption, std::uint64_t done, std::uint64_t total) {
  if (!m_terminal) return;
  const Clock::time_point now = Clock::now();
  if (total != 0 && now < m_next) return;
  m_next = now + kPeriod;
  m_shown = true;
  std::fprintf(stderr, "\r\033[K%s", FittingText(caption).c_str());
  if (total != 0) {
    const double part = static_cast<double>(std::min(done, total)) / static_cast<double>(total);
    std::fprintf(stderr, " %d %%", static_cast<int>(100 * part));
  }
  std::fflush(stderr);
}

void ProgressLine::Clear() {
  if (!m_shown) return;
  m_shown = false;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
}
