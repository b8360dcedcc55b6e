#include "quor/service/manager_notice.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

std::string_view Given(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

long long NumberIn(std::string_view text) {
  long long number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && stop == text.data() + text.size() ? number : 0;
}

}  // namespace

void NotifyManager(const char* words) {
  const std::string_view path = Given("NOTIFY_SOCKET");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (path.front() == '@') address.sun_path[0] = '\0';
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return;
  sendto(socket, words, std::strlen(words), MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address),
         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size()));
  close(socket);
}

std::chrono::microseconds ManagersPatience() {
  const std::string_view process = Given("WATCHDOG_PID");
  if (!process.empty() && NumberIn(process) != getpid()) return {};
  return std::chrono::microseconds(std::max(NumberIn(Given("WATCHDOG_USEC")), 0ll));
}
