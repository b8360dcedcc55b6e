#include "where/hits/where_hits.h"

#include <algorithm>

namespace {

// Some ten milliseconds for all places of an expression.
constexpr std::uint64_t kSteps = 2'000'000;

void AddParts(std::string_view part, std::string_view text, std::vector<HitRange>& hits) {
  std::size_t at = 0;
  for (std::size_t count = 0; !part.empty() && count < WhereHits::kHitsMax; ++count) {
    at = text.find(part, at);
    if (at == text.npos) return;
    hits.push_back({at, at + part.size()});
    at += part.size();
  }
}

std::size_t NextCharacter(std::string_view text, std::size_t at) {
  do {
    ++at;
  } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
  return at;
}

}  // namespace

std::vector<HitRange> WhereHits::In(std::string_view text) {
  std::vector<HitRange> hits;
  if (!m_program) return hits;
  for (const WhereRule& test : m_program->Code().texts) {
    if (test.field != WhereField::Text || test.negated) continue;
    if (test.op == WhereOperator::Contains)
      AddParts(test.values.front().text, text, hits);
    else if (test.op == WhereOperator::StartsWith && text.starts_with(test.values.front().text))
      hits.push_back({0, test.values.front().text.size()});
    else if (test.op == WhereOperator::Matches)
      AddMatches(*test.regex, text, hits);
  }
  hits = JoinedHits(std::move(hits), {});
  if (hits.size() > kHitsMax) hits.resize(kHitsMax);
  return hits;
}

void WhereHits::AddMatches(const WhereRegex& regex, std::string_view text,
                           std::vector<HitRange>& hits) {
  std::size_t from = 0;
  for (std::size_t count = 0; count < kHitsMax; ++count) {
    const auto place = m_search.FindPlace(regex, text, from, kSteps);
    if (!place) return;
    if (place->begin < place->end) hits.push_back({place->begin, place->end});
    from = place->end > from ? place->end : NextCharacter(text, from);
  }
}

std::vector<HitRange> JoinedHits(std::vector<HitRange> one, const std::vector<HitRange>& other) {
  one.insert(one.end(), other.begin(), other.end());
  std::ranges::sort(one, {}, &HitRange::begin);
  std::vector<HitRange> joined;
  for (const HitRange& hit : one) {
    if (hit.begin >= hit.end) continue;
    if (joined.empty() || hit.begin > joined.back().end)
      joined.push_back(hit);
    else
      joined.back().end = std::max(joined.back().end, hit.end);
  }
  return joined;
}
