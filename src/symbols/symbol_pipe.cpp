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

bool ReceiveAll(int socket, char* to, std::size_t size, int timeoutMs) {
  const Clock::time_point until = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (size > 0) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
    if (timeoutMs >= 0 && left <= 0) return false;
    pollfd ready = {socket, POLLIN, 0};
    const int found = poll(&ready, 1, timeoutMs < 0 ? -1 : static_cast<int>(left));
    if (found < 0 && errno == EINTR) continue;
    if (found <= 0) return false;
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

bool ReceiveText(int socket, std::string& text, int timeoutMs) {
  std::uint32_t length = 0;
  char head[sizeof length];
  if (!ReceiveAll(socket, head, sizeof head, timeoutMs)) return false;
  std::memcpy(&length, head, sizeof length);
  if (length > kSymbolTextMax) return false;
  text.resize(length);
  return ReceiveAll(socket, text.data(), length, timeoutMs);
}
