#include "base/near/near_word.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t kFar = std::numeric_limits<std::size_t>::max();
// Longer words are compared only by their capitals: comparing letters costs the product of the
// lengths.
constexpr std::size_t kLettersMax = 128;
constexpr std::size_t kNamesMax = 3;

// Without the dashes of an option, in small letters.
std::string Folded(std::string_view word) {
  std::string folded;
  for (const char c : word)
    if (c != '-' || !folded.empty())
      folded.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
  return folded;
}

// The number of letters that are changed, missing, surplus or swapped with their neighbour.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

std::size_t Allowed(std::size_t letters) {
  return letters <= 2 ? 0 : letters <= 4 ? 1 : letters <= 8 ? 2 : 3;
}

std::size_t Rank(const std::string& word, const std::string& known) {
  if (word == known) return 0;
  const std::size_t least = std::min(word.size(), known.size());
  if (std::max(word.size(), known.size()) > kLettersMax) return kFar;
  const std::size_t distance = Distance(word, known);
  if (distance <= Allowed(least)) return distance;
  // After all words that are nearly the same.
  const bool goesOn = word.size() > 1 && known.compare(0, word.size(), word) == 0;
  return goesOn ? kLettersMax + distance : kFar;
}

}  // namespace

std::vector<std::string> NearWords(std::string_view word, const std::vector<std::string>& known) {
  std::vector<std::string> nearest;
  const std::string folded = Folded(word);
  std::size_t best = kFar - 1;
  for (const std::string& candidate : known) {
    if (candidate == word) continue;  // would not help
    const std::size_t rank = Rank(folded, Folded(candidate));
    if (rank > best) continue;
    if (rank < best) nearest.clear();
    best = rank;
    nearest.push_back(candidate);
  }
  return nearest;
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& known) {
  std::vector<std::string> near = NearWords(word, known);
  if (near.empty()) return {};
  near.resize(std::min(near.size(), kNamesMax));
  std::string words = "; did you mean ";
  for (std::size_t i = 0; i < near.size(); ++i) {
    if (i > 0) words.append(i + 1 < near.size() ? ", " : " or ");
    words.append("\"").append(near[i]).append("\"");
  }
  return words + "?";
}
