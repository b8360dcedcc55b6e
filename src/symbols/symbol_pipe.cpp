#include "symbols/symbol_pipe.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

bool SendAll(int socket, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

constexpr int kLookMs = 20;

class Wait {
 public:
  Wait(int socket, int timeoutMs, const std::function<bool()>& cancelled)
      : m_socket(socket),
        m_limited(timeoutMs >= 0),
        m_until(Clock::now() + std::chrono::milliseconds(timeoutMs)),
        m_cancelled(cancelled) {}

  // False: nothing came in time.
  bool ForBytes() const {
    while (!m_cancelled || !m_cancelled()) {
      if (m_limited && Clock::now() >= m_until) return false;
      pollfd ready = {m_socket, POLLIN, 0};
      const int found = poll(&ready, 1, m_limited || m_cancelled ? kLookMs : -1);
      if (found > 0) return true;
      if (found < 0 && errno != EINTR) return false;
    }
    return false;
  }

 private:
  const int m_socket;
  const bool m_limited;
  const Clock::time_point m_until;
  const std::function<bool()>& m_cancelled;
};

bool ReceiveAll(int socket, char* to, std::size_t size, const Wait& wait) {
  while (size > 0) {
    if (!wait.ForBytes()) return false;
    const ssize_t got = recv(socket, to, size, MSG_DONTWAIT);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (got <= 0) return false;
    to += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

bool SendText(int socket, std::string_view text) {
  const auto length = static_cast<std::uint32_t>(std::min(text.size(), kSymbolTextMax));
  char head[sizeof length];
  std::memcpy(head, &length, sizeof length);
  return text.size() == length && SendAll(socket, head, sizeof head) &&
         SendAll(socket, text.data(), text.size());
}

bool ReceiveText(int socket, std::string& text, int timeoutMs,
                 const std::function<bool()>& cancelled) {
  const Wait wait(socket, timeoutMs, cancelled);
  std::uint32_t length = 0;
  char head[sizeof length];
  if (!ReceiveAll(socket, head, sizeof head, wait)) return false;
  std::memcpy(&length, head, sizeof length);
  if (length > kSymbolTextMax) return false;
  text.resize(length);
  return ReceiveAll(socket, text.data(), length, wait);
}
