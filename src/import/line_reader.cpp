#include "import/line_reader.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

LineReader::LineReader(int descriptor, std::function<bool()> goOn)
    : m_descriptor(descriptor), m_goOn(std::move(goOn)), m_buffer(kBlockBytes) {}

bool LineReader::Next(InputLine& line) {
  if (m_skipping && !SkipRest()) return false;
  for (std::size_t seen = 0;;) {
    const char* const from = m_buffer.data() + m_begin;
    const std::size_t bytes = m_end - m_begin;
    if (bytes > seen) {
      if (const void* const end = std::memchr(from + seen, '\n', bytes - seen)) {
        line = Take(static_cast<std::size_t>(static_cast<const char*>(end) - from), 1, false);
        return true;
      }
    }
    if (bytes > kLineBytesMax) {
      line = Take(kLineBytesMax, 0, true);
      m_skipping = true;
      return true;
    }
    seen = bytes;
    if (ReadMore()) continue;
    if (m_error != 0 || m_stopped || bytes == 0) return false;
    line = Take(bytes, 0, false);
    return true;
  }
}

int LineReader::Peek() {
  if (m_skipping && !SkipRest()) return -1;
  if (m_begin == m_end && !ReadMore()) return -1;
  return static_cast<unsigned char>(m_buffer[m_begin]);
}

std::string_view LineReader::PeekBytes(std::size_t count) {
  if (m_skipping && !SkipRest()) return {};
  while (m_end - m_begin < count && ReadMore()) {
  }
  return {m_buffer.data() + m_begin, std::min(count, m_end - m_begin)};
}

InputLine LineReader::Take(std::size_t bytes, std::size_t lineEnd, bool cut) {
  std::string_view text(m_buffer.data() + m_begin, bytes);
  if (!cut && text.ends_with('\r')) text.remove_suffix(1);
  if (text.size() > kLineBytesMax) {
    text = text.substr(0, kLineBytesMax);
    cut = true;
  }
  m_begin += bytes + lineEnd;
  return {text, cut};
}

// The line before was too long: what is left of it goes.
bool LineReader::SkipRest() {
  for (;;) {
    if (m_begin < m_end) {
      const void* const end = std::memchr(m_buffer.data() + m_begin, '\n', m_end - m_begin);
      if (end) {
        m_begin = static_cast<std::size_t>(static_cast<const char*>(end) - m_buffer.data()) + 1;
        m_skipping = false;
        return true;
      }
    }
    m_begin = m_end = 0;
    if (!ReadMore()) return false;
  }
}

bool LineReader::ReadMore() {
  if (m_ended || m_stopped || m_error != 0) return false;
  if (m_begin > 0) {
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
  }
  if (m_buffer.size() - m_end < kBlockBytes / 2) m_buffer.resize(m_buffer.size() * 2);
  for (;;) {
    if (!Wait()) return false;
    const ssize_t count = read(m_descriptor, m_buffer.data() + m_end, m_buffer.size() - m_end);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) m_error = errno;
    if (count == 0) m_ended = true;
    if (count <= 0) return false;
    m_end += static_cast<std::size_t>(count);
    m_bytesRead += static_cast<std::uint64_t>(count);
    return true;
  }
}

// A read goes on after a signal; only a wait shows it.
bool LineReader::Wait() {
  constexpr int kLookMs = 100;
  pollfd end = {m_descriptor, POLLIN, 0};
  do {
    if (!m_goOn()) {
      m_stopped = true;
      return false;
    }
  } while (poll(&end, 1, kLookMs) <= 0);
  return true;
}
