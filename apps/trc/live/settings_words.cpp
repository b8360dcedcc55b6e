#include "live/settings_words.h"

#include <optional>

#include "near_word.h"
#include "quor/client/settings_words.h"

namespace {

constexpr SettingsWord kPresets[] = {{0, "off"}, {7, "support"}, {15, "developer"}, {799, "max"}};

std::optional<unsigned> MeaningOf(std::string_view word) {
  for (const SettingsWord& preset : kPresets)
    if (word == preset.word) return preset.bit;
  for (const SettingsWord& known : kSettingsWords)
    if (word == known.word) return known.bit;
  return std::nullopt;
}

}  // namespace

bool IsSettingsWord(const std::string& word) {
  return MeaningOf(word).has_value();
}

unsigned SettingsOf(const std::vector<std::string>& words) {
  unsigned settings = 0;
  for (const std::string& word : words) settings |= MeaningOf(word).value_or(0);
  return settings;
}

std::string NearSetting(const std::string& word) {
  std::vector<std::string> known;
  for (const SettingsWord& preset : kPresets) known.emplace_back(preset.word);
  for (const SettingsWord& setting : kSettingsWords) known.emplace_back(setting.word);
  const std::string meant = DidYouMean(word, known);
  return meant.empty() ? "" : "\"" + word + "\" is no setting" + meant;
}
