#include "live/settings_words.h"

#include "near_word.h"
#include "quor/client/trace_config.h"

namespace {

constexpr struct {
  const char* word;
  unsigned settings;
} kSettingsWords[] = {{"off", 0},
                      {"support", 7},
                      {"developer", 15},
                      {"max", 799},
                      {"Info", TRC_SET_INFO},
                      {"Warn", TRC_SET_WARN},
                      {"Error", TRC_SET_ERROR},
                      {"Developer", TRC_SET_DEVELOPER},
                      {"Verbose", TRC_SET_VERBOSE},
                      {"Location", TRC_SET_LOCATION},
                      {"Stack", TRC_SET_STACK}};

}  // namespace

bool IsSettingsWord(const std::string& word) {
  for (const auto& known : kSettingsWords)
    if (word == known.word) return true;
  return false;
}

unsigned SettingsOf(const std::vector<std::string>& words) {
  unsigned settings = 0;
  for (const std::string& word : words)
    for (const auto& known : kSettingsWords)
      if (word == known.word) settings |= known.settings;
  return settings;
}

std::string NearSetting(const std::string& word) {
  std::vector<std::string> known;
  for (const auto& setting : kSettingsWords) known.emplace_back(setting.word);
  const std::string meant = DidYouMean(word, known);
  return meant.empty() ? "" : "\"" + word + "\" is no setting" + meant;
}
