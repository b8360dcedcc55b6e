#include <array>
#include <charconv>

#include "quor/envelope/envelope.h"

namespace {

constexpr std::string_view kFirst = "quor1.";
constexpr std::string_view kPlain =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
constexpr std::string_view kWord = "_";
// The line that names a subject has a limit in servers, and three of these fit in easily.
constexpr std::size_t kTokenBytes = 255, kHashDigits = 16;
constexpr std::string_view kCut = "==";

void AppendHex(std::uint64_t number, std::size_t digits, std::string& to) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (std::size_t i = digits; i-- > 0;) to.push_back(kDigits[number >> (4 * i) & 15]);
}

// FNV-1a.
std::uint64_t HashOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (const char byte : text) hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001b3u;
  return hash;
}

bool TakeHex(std::string_view digits, unsigned& number) {
  const auto* const end = digits.data() + digits.size();
  for (const char digit : digits)
    if (digit >= 'a' && digit <= 'f') return false;
  return std::from_chars(digits.data(), end, number, 16).ptr == end;
}

// False: no name gives this token.
bool ReadToken(std::string_view token, std::string& name) {
  name.clear();
  if (token == "=") return true;
  std::string_view rest = token;
  const std::size_t cut = token.find(kCut);
  if (cut != token.npos) rest = token.substr(0, cut);
  for (std::size_t i = 0; i < rest.size(); ++i) {
    unsigned byte = static_cast<std::uint8_t>(rest[i]);
    if (rest[i] == '=') {
      if (i + 2 >= rest.size() || !TakeHex(rest.substr(i + 1, 2), byte)) return false;
      i += 2;
    } else if (kPlain.find(rest[i]) == kPlain.npos) {
      return false;
    }
    name.push_back(static_cast<char>(byte));
  }
  return cut != token.npos ? token.size() == cut + kCut.size() + kHashDigits
                           : SubjectToken(name) == token;
}

}  // namespace

std::string SubjectToken(const std::string& name) {
  if (name.empty()) return "=";
  if (name == kWord) return "=5F";
  std::string token;
  for (const char byte : name) {
    if (token.size() + 3 > kTokenBytes - kCut.size() - kHashDigits) {
      token.append(kCut);
      AppendHex(HashOf(name), kHashDigits, token);
      break;
    }
    if (kPlain.find(byte) != kPlain.npos) {
      token.push_back(byte);
    } else {
      token.push_back('=');
      AppendHex(static_cast<std::uint8_t>(byte), 2, token);
    }
  }
  return token;
}

std::string UserInbox(const std::string& email) {
  return "_INBOX_" + SubjectToken(email);
}

std::string EnvelopeSubject(const std::string& machine, const std::string& app) {
  return std::string(kFirst).append(SubjectToken(machine)).append(".").append(SubjectToken(app));
}

std::string WordSubject(const std::string& machine) {
  return std::string(kFirst).append(SubjectToken(machine)).append(".").append(kWord);
}

bool ReadSubject(const std::string& subject, std::string& machine, std::string& app, bool& word) {
  const std::string_view all = subject;
  if (all.substr(0, kFirst.size()) != kFirst) return false;
  const std::size_t dot = all.find('.', kFirst.size());
  if (dot == all.npos) return false;
  const std::string_view last = all.substr(dot + 1);
  word = last == kWord;
  app.clear();
  return ReadToken(all.substr(kFirst.size(), dot - kFirst.size()), machine) && !last.empty() &&
         (word || ReadToken(last, app));
}
