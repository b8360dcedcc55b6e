#include "quor/engine/pull/replies.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/fail_with.h"

namespace {

using Json = nlohmann::json;

Json ReadJson(Bytes body) {
  auto json = Json::parse(body.begin(), body.end(), nullptr, false);
  return json.is_object() ? json : Json::object();
}

std::string TextOf(const Json& json, const char* key) {
  const auto at = json.find(key);
  return at != json.end() && at->is_string() ? at->get<std::string>() : std::string();
}

std::uint64_t NumberOf(const Json& json, const char* key) {
  const auto at = json.find(key);
  return at != json.end() && at->is_number_unsigned() ? at->get<std::uint64_t>() : 0;
}

// What the engine refuses: its words, and its number.
std::optional<std::string> ErrorOf(const Json& json, int& error) {
  const auto at = json.find("error");
  if (at == json.end() || !at->is_object()) return std::nullopt;
  error = int(NumberOf(*at, "err_code"));
  const std::string words = TextOf(*at, "description");
  return words.empty() ? "the engine refuses without a reason" : "the engine says: " + words;
}

bool ReadNumber(std::string_view text, std::uint64_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

int Base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

bool ReadBase64(std::string_view text, std::vector<std::uint8_t>& bytes) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  unsigned bits = 0, held = 0;
  for (const char c : text) {
    const int digit = Base64Digit(c);
    if (digit < 0) return false;
    held = (held << 6 | unsigned(digit)) & 0xFFFF;
    if ((bits += 6) >= 8) bytes.push_back(std::uint8_t(held >> (bits -= 8)));
  }
  return true;
}

constexpr char kNotUnderstood[] = "the engine's answer cannot be read";

}  // namespace

EngineAck ReadPublishAck(Bytes body, int& error) {
  const Json json = ReadJson(body);
  EngineAck ack;
  error = 0;
  if (const auto refused = ErrorOf(json, error)) {
    ack.why = *refused;
    return ack;
  }
  ack.stream = TextOf(json, "stream");
  ack.sequence = NumberOf(json, "seq");
  const auto duplicate = json.find("duplicate");
  ack.duplicate = duplicate != json.end() && duplicate->is_boolean() && duplicate->get<bool>();
  ack.stored = !ack.stream.empty() && ack.sequence > 0;
  if (!ack.stored) ack.why = kNotUnderstood;
  return ack;
}

bool ReadStreamState(Bytes body, StreamState& state, std::string* why) {
  const Json json = ReadJson(body);
  int error = 0;
  if (const auto refused = ErrorOf(json, error)) return FailWith(why, *refused);
  state.created = TextOf(json, "created");
  const auto at = json.find("state");
  if (state.created.empty() || at == json.end() || !at->is_object())
    return FailWith(why, kNotUnderstood);
  state.first = NumberOf(*at, "first_seq");
  state.last = NumberOf(*at, "last_seq");
  return true;
}

bool ReadConsumerMade(Bytes body, std::string* why) {
  const Json json = ReadJson(body);
  int error = 0;
  if (const auto refused = ErrorOf(json, error)) return FailWith(why, *refused);
  return !TextOf(json, "name").empty() || FailWith(why, kNotUnderstood);
}

bool ReadStoredMessage(Bytes body, EngineValue& value, int& error, std::string* why) {
  const Json json = ReadJson(body);
  error = 0;
  if (const auto refused = ErrorOf(json, error)) return FailWith(why, *refused);
  const auto at = json.find("message");
  if (at == json.end() || !at->is_object()) return FailWith(why, kNotUnderstood);
  value.revision = NumberOf(*at, "seq");
  if (!value.revision || !ReadBase64(TextOf(*at, "data"), value.value))
    return FailWith(why, kNotUnderstood);
  return true;
}

std::optional<DeliveredPlace> ReadDeliveredPlace(const std::string& reply) {
  std::array<std::string_view, 12> words;
  std::size_t count = 0;
  std::string_view rest = reply;
  for (; count < words.size(); count++) {
    const auto dot = rest.find('.');
    words[count] = rest.substr(0, dot);
    if (dot == rest.npos) break;
    rest.remove_prefix(dot + 1);
  }
  // Newer engines put two words before the stream, and may put more behind.
  if (count != 8 && count < 10) return std::nullopt;
  const std::size_t at = count == 8 ? 3 : 5;
  if (words[0] != "$JS" || words[1] != "ACK") return std::nullopt;
  DeliveredPlace place;
  place.consumer = words[at];
  std::uint64_t nanoseconds = 0;
  if (!ReadNumber(words[at + 2], place.sequence) || !ReadNumber(words[at + 3], place.ofConsumer) ||
      !ReadNumber(words[at + 4], nanoseconds) || nanoseconds > std::uint64_t(INT64_MAX))
    return std::nullopt;
  place.arrived = EngineTime(std::chrono::nanoseconds(std::int64_t(nanoseconds)));
  return place;
}

std::string EngineTimeText(EngineTime time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const std::time_t whole = seconds.time_since_epoch().count();
  std::tm parts{};
  gmtime_r(&whole, &parts);
  char text[80];
  const auto length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + length, sizeof text - length, ".%09lldZ",
                static_cast<long long>((time - seconds).count()));
  return text;
}
