#include "terminal/output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "terminal/exit_status.h"
#include "terminal/harmless_text.h"
#include "terminal/interrupt.h"

bool Output::Flush() {
  std::size_t written = 0;
  while (m_error == 0 && written < m_buffer.size()) {
    const ssize_t count =
        write(STDOUT_FILENO, m_buffer.data() + written, m_buffer.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      m_error = errno;
    }
  }
  if (m_error != 0)
    m_linesLost += static_cast<std::uint64_t>(
        std::count(m_buffer.begin() + static_cast<std::ptrdiff_t>(written), m_buffer.end(), '\n'));
  m_buffer.clear();
  m_flushed = Clock::now();
  return m_error == 0 && !Interrupted();
}

int Output::Finish() {
  Flush();
  if (m_error != 0 && m_error != EPIPE) {
    PrintError("cannot write the output: " + std::generic_category().message(m_error));
    return kExitBad;
  }
  return Interrupted() ? kExitInterrupted : kExitGood;
}

void PrintError(std::string_view text) {
  std::fprintf(stderr, "trc: %s\n", HarmlessText(text).c_str());
}
