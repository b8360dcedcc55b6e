#include "quor/protocol/machine.h"

#include <unistd.h>

#include <charconv>

#include "base/fail_with.h"
#include "base/text.h"

namespace {

constexpr std::size_t kHostBytesMax = 253;  // of a name in the domain name system

// As the system reports it, often with its domain; empty when there is none.
std::string WholeHostName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

bool IsLocalName(const std::string& text) {
  if (text.empty() || text == "127.0.0.1" || text == "::1") return true;
  return CompareIgnoringCase(text, "localhost") == 0 ||
         CompareIgnoringCase(text, LocalHostName()) == 0 ||
         CompareIgnoringCase(text, WholeHostName()) == 0;
}

bool IsHost(const std::string& host) {
  if (host.empty() || host.size() > kHostBytesMax) return false;
  for (const char byte : host) {
    const auto value = static_cast<unsigned char>(byte);
    if (value <= ' ' || value == 0x7F || byte == '/' || byte == '[' || byte == ']') return false;
  }
  return true;
}

}  // namespace

std::optional<Machine> ParseMachine(const std::string& text, std::string* why) {
  if (IsLocalName(text)) return Machine{};
  Machine machine{false, text, kDefaultPort};
  std::string port;
  bool hasPort = false;
  if (text.front() == '[') {
    const std::size_t end = text.find(']');
    if (end == text.npos)
      return FailWith(why, "\"" + text + "\": the bracket is not closed", std::nullopt);
    machine.host = text.substr(1, end - 1);
    const std::string rest = text.substr(end + 1);
    hasPort = !rest.empty();
    if (hasPort && rest.front() != ':')
      return FailWith(why, "\"" + text + "\" names no machine", std::nullopt);
    port = hasPort ? rest.substr(1) : "";
  } else if (const std::size_t colon = text.find(':');
             colon != text.npos && text.find(':', colon + 1) == text.npos) {
    hasPort = true;  // more than one colon: an address without a port
    machine.host = text.substr(0, colon);
    port = text.substr(colon + 1);
  }
  if (!IsHost(machine.host))
    return FailWith(why, "\"" + text + "\" names no machine", std::nullopt);
  if (!hasPort) return machine;
  const char* const end = port.data() + port.size();
  const auto [stop, error] = std::from_chars(port.data(), end, machine.port);
  if (error != std::errc() || stop != end || machine.port == 0)
    return FailWith(why, "\"" + port + "\" is not a port", std::nullopt);
  return machine;
}

std::string LocalHostName() {
  const std::string whole = WholeHostName();
  const std::string host = whole.substr(0, whole.find('.'));
  return host.empty() ? "localhost" : host;
}

std::string AddressOf(const std::string& host, std::uint16_t port) {
  const bool six = host.find(':') != host.npos;
  return (six ? "[" + host + "]" : host) + ":" + std::to_string(port);
}
