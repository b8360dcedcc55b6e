#include "quor/address/relay_address.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/fail_with.h"

namespace {

using From = RelayAddress::Since::From;
using std::chrono::seconds;

constexpr std::size_t kAddressBytesMax = 4096, kHostBytesMax = 253, kStreamBytesMax = 64;
constexpr std::size_t kServersMax = 16;
constexpr seconds kLongestAgo = std::chrono::days(3650);
constexpr std::string_view kPlain = "nats://", kSecure = "tls://";
constexpr std::string_view kUnreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
constexpr const char* kSinceForms = "now, start, a time ago as 10m, or a time as 2026-11-22T00:30Z";

struct Unit {
  char letter;
  seconds length;
};
constexpr Unit kUnits[] = {{'d', std::chrono::days(1)},
                           {'h', std::chrono::hours(1)},
                           {'m', std::chrono::minutes(1)},
                           {'s', seconds(1)}};

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

// All digits, and nothing else.
template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  if (text.empty() || text.front() < '0' || text.front() > '9') return false;
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

// The part up to `mark`, which is taken off with it.
std::string_view TakeUpTo(std::string_view& text, char mark) {
  const std::size_t at = text.find(mark);
  const std::string_view part = text.substr(0, at);
  text = at == text.npos ? std::string_view() : text.substr(at + 1);
  return part;
}

int HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const int lower = digit | 0x20;
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool Decode(std::string_view text, std::string& to, std::string* why) {
  to.clear();
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      to.push_back(text[at]);
      continue;
    }
    const int high = at + 2 < text.size() ? HexDigit(text[at + 1]) : -1;
    const int low = high < 0 ? -1 : HexDigit(text[at + 2]);
    if (low < 0 || high + low == 0)
      return FailWith(why, Quoted(text) + ": after % come two digits of a byte, as in %20");
    to.push_back(static_cast<char>(high * 16 + low));
    at += 2;
  }
  return true;
}

void Encode(std::string_view text, std::string& to) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if (kUnreserved.find(byte) != kUnreserved.npos)
      to.push_back(byte);
    else
      to.append({'%', kDigits[value >> 4], kDigits[value & 15]});
  }
}

bool IsHost(std::string_view host) {
  if (host.empty() || host.size() > kHostBytesMax) return false;
  return std::all_of(host.begin(), host.end(), [](char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value > ' ' && value != 0x7F &&
           std::string_view("/[]@\"?&%#").find(byte) == std::string_view::npos;
  });
}

bool IsLoopback(const std::string& host) {
  std::uint8_t rest = 0;
  if (host == "localhost" || host == "::1") return true;
  if (!host.starts_with("127.")) return false;
  std::string_view numbers = std::string_view(host).substr(4);
  return ReadNumber(TakeUpTo(numbers, '.'), rest) && ReadNumber(TakeUpTo(numbers, '.'), rest) &&
         ReadNumber(numbers, rest);
}

bool ReadServer(std::string_view text, RelayAddress::Server& server, std::string* why) {
  std::string_view host = text, port;
  bool hasPort = false;
  if (text.find('@') != text.npos)
    return FailWith(why, Quoted(text) + ": a certificate says who you are, not a name before @");
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == text.npos) return FailWith(why, Quoted(text) + ": the bracket is not closed");
    host = text.substr(1, end - 1);
    port = text.substr(end + 1);
    hasPort = !port.empty();
    if (hasPort && !port.starts_with(':')) return FailWith(why, Quoted(text) + " names no server");
    if (hasPort) port.remove_prefix(1);
  } else if (const std::size_t colon = text.find(':'); colon != text.npos) {
    hasPort = true;
    host = text.substr(0, colon);
    port = text.substr(colon + 1);
  }
  if (!IsHost(host)) return FailWith(why, Quoted(text) + " names no server");
  server.host = host;
  if (hasPort && (!ReadNumber(port, server.port) || server.port == 0))
    return FailWith(why, Quoted(port) + " is not a port");
  return true;
}

bool ReadServers(std::string_view text, RelayAddress& address, std::string* why) {
  do {
    if (address.servers.size() == kServersMax)
      return FailWith(why, "an address names at most " + std::to_string(kServersMax) + " servers");
    if (!ReadServer(TakeUpTo(text, ','), address.servers.emplace_back(), why)) return false;
  } while (!text.empty());
  return true;
}

bool ReadDigits(std::string_view text, std::size_t at, std::size_t digits, unsigned& number) {
  return text.size() >= at + digits && ReadNumber(text.substr(at, digits), number);
}

// "2026-11-22T00:30Z" or "2026-11-22T00:30:05Z".
bool ReadTime(std::string_view text, std::chrono::sys_seconds& time) {
  using namespace std::chrono;
  unsigned y = 0, m = 0, d = 0, hour = 0, minute = 0, second = 0;
  const bool hasSeconds = text.size() == 20;
  if ((text.size() != 17 && !hasSeconds) || text.back() != 'Z') return false;
  if (text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':') return false;
  if (hasSeconds && (text[16] != ':' || !ReadDigits(text, 17, 2, second))) return false;
  if (!ReadDigits(text, 0, 4, y) || !ReadDigits(text, 5, 2, m) || !ReadDigits(text, 8, 2, d) ||
      !ReadDigits(text, 11, 2, hour) || !ReadDigits(text, 14, 2, minute))
    return false;
  const year_month_day date(year(static_cast<int>(y)), month(m), day(d));
  if (!date.ok() || y < 1970 || hour > 23 || minute > 59 || second > 59) return false;
  time = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
  return true;
}

bool ReadSince(const std::string& text, RelayAddress::Since& since, std::string* why) {
  if (text == "now") return true;
  since.from = From::Start;
  if (text == "start") return true;
  since.from = From::Time;
  if (ReadTime(text, since.time)) return true;
  since.from = From::Ago;
  std::uint32_t number = 0;
  for (const Unit& unit : kUnits) {
    if (!text.ends_with(unit.letter) || !ReadNumber(text.substr(0, text.size() - 1), number))
      continue;
    since.ago = unit.length * static_cast<std::int64_t>(number);
    if (since.ago <= kLongestAgo) return true;
    return FailWith(why, "since=" + text + ": that is longer than ten years");
  }
  return FailWith(why, "since=" + text + ": it is " + kSinceForms);
}

bool ReadWishes(std::string_view text, RelayAddress& address, std::string* why) {
  std::vector<std::string_view> known;
  while (!text.empty()) {
    std::string_view value = TakeUpTo(text, '&');
    const bool hasValue = value.find('=') != value.npos;
    const std::string_view key = TakeUpTo(value, '=');
    std::string decoded;
    if (std::find(known.begin(), known.end(), key) != known.end())
      return FailWith(why, Quoted(key) + " stands twice in the address");
    if (key != "machine" && key != "app" && key != "since")
      return FailWith(why, Quoted(key) + " is none of machine, app and since");
    if (!hasValue || value.empty()) return FailWith(why, Quoted(key) + " has no value");
    if (!Decode(value, decoded, why)) return false;
    known.push_back(key);
    if (key == "since" && !ReadSince(decoded, address.since, why)) return false;
    if (key == "machine") address.machine = decoded;
    if (key == "app") address.app = decoded;
  }
  return true;
}

bool IsStreamName(std::string_view name) {
  return !name.empty() && name.size() <= kStreamBytesMax &&
         std::all_of(name.begin(), name.end(), [](char byte) {
           return byte != '.' && byte != '~' && kUnreserved.find(byte) != kUnreserved.npos;
         });
}

std::string SinceText(const RelayAddress::Since& since) {
  using namespace std::chrono;
  if (since.from == From::Start) return "start";
  if (since.from == From::Ago) {
    for (const Unit& unit : kUnits)
      if (since.ago % unit.length == seconds(0))
        return std::to_string(since.ago / unit.length) + unit.letter;
  }
  const auto date = floor<days>(since.time);
  const year_month_day day(date);
  const hh_mm_ss clock(since.time - date);
  char text[48];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

}  // namespace

std::vector<std::string> RelayAddress::ServerTexts() const {
  std::vector<std::string> texts;
  for (const Server& server : servers) {
    const bool six = server.host.find(':') != server.host.npos;
    texts.push_back((six ? "[" + server.host + "]" : server.host) + ":" +
                    std::to_string(server.port));
  }
  return texts;
}

bool IsRelayAddress(const std::string& text) {
  return text.starts_with(kPlain) || text.starts_with(kSecure);
}

std::optional<RelayAddress> ParseRelayAddress(const std::string& text, std::string* why) {
  RelayAddress address;
  if (text.size() > kAddressBytesMax)
    return FailWith(why, "an address of more than " + std::to_string(kAddressBytesMax) + " bytes",
                    std::nullopt);
  if (!IsRelayAddress(text))
    return FailWith(why, Quoted(text) + " does not begin with nats:// or tls://", std::nullopt);
  if (text.find('\0') != text.npos) return FailWith(why, "an address with a byte 0", std::nullopt);
  const bool secure = text.starts_with(kSecure);
  std::string_view rest = text;
  rest.remove_prefix(secure ? kSecure.size() : kPlain.size());
  std::string_view place = TakeUpTo(rest, '?');
  const std::string_view servers = TakeUpTo(place, '/');
  if (!ReadServers(servers, address, why)) return std::nullopt;
  if (place.empty())
    return FailWith(why, Quoted(text) + " names no stream: write it behind the servers, as /QUOR1",
                    std::nullopt);
  if (!IsStreamName(place))
    return FailWith(why, Quoted(place) + " cannot be the name of a stream", std::nullopt);
  address.stream = place;
  address.tls = secure || !std::all_of(address.servers.begin(), address.servers.end(),
                                       [](const auto& server) { return IsLoopback(server.host); });
  if (!ReadWishes(rest, address, why)) return std::nullopt;
  return address;
}

std::string RelayAddressText(const RelayAddress& address) {
  std::string text(address.tls ? kSecure : kPlain);
  const char* between = "";
  for (const std::string& server : address.ServerTexts()) {
    text.append(between).append(server);
    between = ",";
  }
  text.append("/").append(address.stream);
  between = "?";
  const auto add = [&](const char* key, const std::string& value) {
    if (value.empty()) return;
    text.append(between).append(key).append("=");
    Encode(value, text);
    between = "&";
  };
  add("machine", address.machine);
  add("app", address.app);
  if (address.since.from != From::Now) add("since", SinceText(address.since));
  return text;
}
