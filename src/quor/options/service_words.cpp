#include "quor/options/service_words.h"

#include <algorithm>
#include <charconv>

#include "base/near/near_word.h"
#include "quor/listeners/tls_listener.h"
#include "quor/settings/settings_words.h"

namespace {

constexpr std::size_t kValueBytesMax = 4095;  // as of a path

constexpr unsigned kTakersMax = 64, kTakerStoreMax = 4096;  // MiB

std::optional<unsigned> NumberOf(const std::string& value, unsigned least, unsigned most) {
  unsigned number = 0;
  const char* const end = value.data() + value.size();
  const auto read = std::from_chars(value.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number < least || number > most)
    return std::nullopt;
  return number;
}

std::string WhyNoValue(std::string_view word, const std::string& value) {
  const std::string quoted = "\"" + value + "\"";
  std::string why;
  if (word == "log-level" && !LogLevelOf(value))
    return quoted + " is no level" + DidYouMean(value, {"error", "warning", "info", "debug"});
  if (word == "listen" && !EndpointOf(value)) return quoted + " is not ADDRESS:PORT";
  if (word == "default-settings" && !SettingsOf(value, &why)) return why;
  if (word == "takers" && !NumberOf(value, 0, kTakersMax))
    return quoted + " is no number from 0 to " + std::to_string(kTakersMax);
  if (word == "taker-store" && !NumberOf(value, 1, kTakerStoreMax))
    return quoted + " is no number from 1 to " + std::to_string(kTakerStoreMax);
  if (word == "role-from" && value != "ou" && value != "san")
    return quoted + " is none of ou, san" + DidYouMean(value, {"ou", "san"});
  if (word == "map-role" && !MappedRole(value, &why)) return why;
  if (word == "machine" && value != "yes" && value != "no")
    return quoted + " is none of yes, no" + DidYouMean(value, {"yes", "no"});
  return {};
}

void TakeRepeatable(const std::string& word, const std::string& value, ServiceSettings& to) {
  if (word == "listen") to.listen.push_back(value);
  if (word == "map-role")
    if (auto role = MappedRole(value)) to.roles.texts.push_back(std::move(*role));
}

void TakeSingle(const std::string& word, const std::string& value, ServiceSettings& to) {
  if (word == "log-level") to.logLevel = LogLevelOf(value).value_or(to.logLevel);
  if (word == "default-settings") to.defaultSettings = SettingsOf(value).value_or(0);
  if (word == "state-dir") to.stateFolder = value;
  if (word == "socket-dir") to.socketFolder = value;
  if (word == "keys-dir") to.keysFolder = value;
  if (word == "group") to.group = value;
  if (word == "machine") to.machine = value == "yes";
  if (word == "user") to.user = value;
  if (word == "crl") to.revoked = value;
  if (word == "takers") to.takers = NumberOf(value, 0, kTakersMax).value_or(to.takers);
  if (word == "taker-store")
    to.takerStore = NumberOf(value, 1, kTakerStoreMax).value_or(to.takerStore);
  if (word == "role-from") to.roles.fromAltNames = value == "san";
}

}  // namespace

const std::vector<ServiceWord>& ServiceWords() {
  static const std::vector<ServiceWord> words = {
      {"log-level", "LEVEL", "error, warning, info or debug [default: info]"},
      {"listen", "ADDRESS:PORT", "Accept other machines at this address, by mutual TLS; repeatable",
       false, true},
      {"state-dir", "DIR", "Where settings are kept", true},
      {"socket-dir", "DIR", "Where the local socket is made", true},
      {"keys-dir", "DIR", "Where the certificates are", true},
      {"machine", "yes|no",
       "Be the one service for all accounts of this machine, at /run/quor; started by root or by "
       "its service manager",
       false, false, true},
      {"user", "NAME", "The user that a --machine that root starts becomes [default: quord]"},
      {"group", "NAME",
       "The members of this group may watch and configure here, too, with --machine all accounts "
       "[default with --machine: quor, if there is such a group]"},
      {"crl", "FILE", "Refuse the certificates that these lists (PEM) revoke", true},
      {"role-from", "ou|san",
       "Where a certificate has its role: the OU of its subject, or an "
       "alternative name [default: ou]"},
      {"map-role", "ROLE=TEXT", "This OU or alternative name gives the role; repeatable", false,
       true},
      {"takers", "N",
       "How many local programs may take traces and confirm them, each of which may make the "
       "service keep some; 0: none [default: 4]"},
      {"taker-store", "MIB", "How much is kept for each of them at the most [default: 64]"},
      {"default-settings", "SETTINGS",
       "What a new application traces: off, support, developer, max, or words as Info+Stack "
       "[default: support]"}};
  return words;
}

const ServiceWord* FindServiceWord(std::string_view word) {
  const auto& words = ServiceWords();
  const auto found = std::find_if(words.begin(), words.end(),
                                  [word](const ServiceWord& known) { return known.word == word; });
  return found == words.end() ? nullptr : &*found;
}

std::string WhyNotOption(const std::string& word, const std::string& value) {
  if (!FindServiceWord(word)) {
    std::vector<std::string> known;
    for (const ServiceWord& one : ServiceWords()) known.emplace_back(one.word);
    return "there is no option \"" + word + "\"" + DidYouMean(word, known);
  }
  if (value.empty()) return "a value is missing";
  if (value.size() > kValueBytesMax) return "the value is too long";
  return WhyNoValue(word, value);
}

void ServiceSettings::Take(const std::vector<GivenOption>& given) {
  for (const GivenOption& option : given) {
    if (option.word == "listen") listen.clear();
    if (option.word == "map-role") roles.texts.clear();
  }
  for (const GivenOption& option : given) {
    TakeRepeatable(option.word, option.value, *this);
    TakeSingle(option.word, option.value, *this);
  }
}
