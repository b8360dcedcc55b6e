#include "quor/http/client/web_address.h"

#include <algorithm>
#include <charconv>

#include "base/fail_with.h"
#include "base/text.h"

namespace {

// Bytes that would end a line or a word of a request.
bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

bool ReadPort(const std::string& text, std::uint16_t& port) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port != 0;
}

// "host", "host:port", "[address]:port".
bool ReadAuthority(const std::string& text, WebAddress& address, std::string* why) {
  std::size_t end = text.find(':');
  if (text.starts_with('[')) {
    const std::size_t close = text.find(']');
    if (close == text.npos) return FailWith(why, "a \"]\" is missing");
    address.host = text.substr(1, close - 1);
    end = close + 1;
  } else {
    address.host = text.substr(0, end);
  }
  if (address.host.empty()) return FailWith(why, "it names no host");
  if (end == text.npos || end == text.size()) return true;
  if (text[end] != ':' || !ReadPort(text.substr(end + 1), address.port))
    return FailWith(why, "a port is a number from 1 to 65535");
  return true;
}

}  // namespace

std::string WebAddress::Authority() const {
  const bool isV6 = host.find(':') != host.npos;
  return (isV6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::optional<WebAddress> ReadWebAddress(const std::string& text, std::uint16_t port,
                                         std::string* why) {
  WebAddress address;
  address.port = port;
  const std::size_t colon = text.find("://");
  const std::string scheme = ToLowerAscii(text.substr(0, colon == text.npos ? 0 : colon));
  address.tls = scheme == "https";
  if (!address.tls && scheme != "http")
    return FailWith(why, "it begins with http:// or https://", std::nullopt);
  if (!IsPlain(text)) return FailWith(why, "it has a blank or a strange byte", std::nullopt);
  const std::string rest = text.substr(colon + 3);
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  if (rest.find_first_of("?#") != rest.npos)
    return FailWith(why, "it cannot have a \"?\" or \"#\"", std::nullopt);
  if (rest.substr(0, slash).find('@') != std::string::npos)
    return FailWith(why, "names and passwords belong into a header of --header-file", std::nullopt);
  if (!ReadAuthority(rest.substr(0, slash), address, why)) return std::nullopt;
  address.path = rest.substr(slash);
  while (address.path.ends_with('/')) address.path.pop_back();
  return address;
}
