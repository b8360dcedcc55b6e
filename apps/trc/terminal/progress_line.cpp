#include "terminal/progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

ProgressLine::ProgressLine()
    : m_terminal(isatty(STDERR_FILENO) != 0), m_next(Clock::now() + kPeriod) {}

void ProgressLine::Show(std::string_view caption, std::uint64_t done, std::uint64_t total) {
  if (!m_terminal) return;
  const Clock::time_point now = Clock::now();
  if (total != 0 && now < m_next) return;
  m_next = now + kPeriod;
  m_shown = true;
  std::fprintf(stderr, "\r\033[K%.*s", static_cast<int>(caption.size()), caption.data());
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
