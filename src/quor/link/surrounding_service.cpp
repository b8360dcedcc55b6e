// SurroundingService: reads the cgroup of this process.
#include <fcntl.h>
#include <unistd.h>

#include <string_view>

#include "quor/link/paths.h"

namespace {

constexpr std::string_view kService = ".service", kScope = ".scope";

// The manager of a user contains that user's sessions and applications. An application that a
// desktop has started lives as long as one of its processes.
bool IsNoService(std::string_view name) {
  return name.starts_with("user@") || name.starts_with("app-");
}

std::string_view ServiceIn(std::string_view path) {
  std::string_view inside;
  while (!path.empty()) {
    path.remove_prefix(1);  // the slash
    const std::string_view name = path.substr(0, path.find('/'));
    if (name.ends_with(kService)) inside = IsNoService(name) ? std::string_view() : name;
    if (name.ends_with(kScope)) inside = {};
    path.remove_prefix(name.size());
  }
  return inside;
}

// "0::/path" of the one hierarchy, or "N:name=systemd:/path" of the manager's own.
std::string_view PathOf(std::string_view line) {
  const std::size_t first = line.find(':');
  const std::size_t second = first == line.npos ? line.npos : line.find(':', first + 1);
  if (second == line.npos || second + 1 >= line.size() || line[second + 1] != '/') return {};
  const std::string_view hierarchy = line.substr(first + 1, second - first - 1);
  return hierarchy.empty() || hierarchy == "name=systemd" ? line.substr(second + 1)
                                                          : std::string_view();
}

}  // namespace

std::string SurroundingService(const std::string& file) {
  char bytes[8192];
  const int cgroups = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (cgroups < 0) return {};
  const ssize_t length = read(cgroups, bytes, sizeof bytes);
  close(cgroups);
  std::string_view text(bytes, length > 0 ? static_cast<std::size_t>(length) : 0);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (const std::string_view service = ServiceIn(PathOf(line)); !service.empty())
      return std::string(service);
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
  }
  return {};
}
