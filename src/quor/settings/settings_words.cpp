#include "quor/settings/settings_words.h"

#include <algorithm>
#include <vector>

#include "base/fail_with.h"
#include "base/near/near_word.h"
#include "quor/settings/plain_words.h"

namespace {

constexpr unsigned kSeverities = 7, kDeveloperBit = 8, kDeveloperPreset = 15;

template <class Words>
std::optional<unsigned> Among(const Words& words, std::string_view word) {
  for (const SettingsWord& known : words)
    if (IsSameWord(known.word, word)) return known.bit;
  return std::nullopt;
}

}  // namespace

std::optional<unsigned> SettingsOf(std::string_view words, std::string* why) {
  unsigned settings = 0, named = 0;
  bool developer = false;
  for (bool more = true; more;) {
    const std::size_t plus = words.find('+');
    more = plus != std::string_view::npos;
    const std::string_view word = WithoutBlanks(words.substr(0, plus));
    if (more) words.remove_prefix(plus + 1);
    const std::optional<unsigned> bit = Among(kSettingsWords, word);
    const std::optional<unsigned> meaning = bit ? bit : Among(kSettingsPresets, word);
    if (!meaning) {
      const std::string near = NearSetting(word);
      return FailWith(why, near.empty() ? InQuotes(word) + " is no setting" : near, std::nullopt);
    }
    if (bit == kDeveloperBit) developer = true;
    if (bit) named |= *bit;
    settings |= *meaning;
  }
  if (developer && (named & kSeverities) == 0) settings |= kDeveloperPreset;
  return settings;
}

std::string NearSetting(std::string_view word) {
  std::vector<std::string> known;
  for (const SettingsWord& setting : kSettingsWords) known.emplace_back(setting.word);
  for (const SettingsWord& preset : kSettingsPresets)
    if (preset.bit != kDeveloperPreset) known.emplace_back(preset.word);
  const std::string meant = DidYouMean(word, known);
  return meant.empty() ? "" : InQuotes(word) + " is no setting" + meant;
}
