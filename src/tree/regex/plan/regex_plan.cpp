#include "tree/regex/plan/regex_plan.h"

#include <algorithm>

#include "tree/regex/plan/regex_machine.h"
#include "tree/regex/program/ascii.h"

namespace {

constexpr std::size_t kLongestSegment = 64;
// A probe is worth a pass of its own over the text when it is so much rarer than the start.
constexpr unsigned kMuchRarer = 4;
// A probe that holds more often than this is not worth a search.
constexpr unsigned kTooCommon = kAlways * kAlways / 6;

bool EndsLine(char c) {
  return c == kCr || c == kLf;
}

// The start of the next line after the failed position, kNowhere when there is none. Kept: a line
// end at the failed position itself is skipped.
std::size_t NextLine(std::string_view text, std::size_t failed) {
  static const WideTest kAround(ByteTest{0, kLf, kCr - kLf});
  static const PairTest kEnds{kAround, kAround, 0, 0};
  std::size_t at = failed + 1;
  do {
    if (at >= text.size()) return kNowhere;
    at = FindPair(text, at, text.size(), kEnds);
    if (at == kNowhere) return kNowhere;
    ++at;
  } while (!EndsLine(text[at - 1]));
  if (at < text.size() && text[at] != text[at - 1] && EndsLine(text[at])) ++at;
  return at < text.size() ? at : kNowhere;
}

}  // namespace

RegexPlan::RegexPlan(const RegexProgram& program)
    : m_nodes(program),
      m_anchored(program.Anchored()),
      m_wordFlag(program.WordSearch() && !program.Anchored()) {
  m_anyFirst =
      std::all_of(m_nodes.First().begin(), m_nodes.First().end(), [](bool b) { return b; });
  for (std::size_t i = 0; i < m_nodes.size(); ++i)
    m_never |= m_nodes[i].kind == RegexNodeKind::Fail;
  // If a set contains the zero of the text's end, a match may extend beyond the end.
  if (!m_nodes.TakesZero()) ChooseProbes();
  FindLeadingRun();
  if (ProbesAll()) m_wholeBytes = m_start->bytes;
}

// ---- what is known of a match

std::vector<RegexPlan::Segment> RegexPlan::Segments() const {
  std::vector<Segment> segments(1);
  segments[0].leads = true;
  const auto add = [&](const ByteTable* table) {
    if (segments.back().tables.size() < kLongestSegment) segments.back().tables.push_back(table);
  };
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    const RegexNode& node = m_nodes[i];
    if (node.kind == RegexNodeKind::Byte) {
      add(node.table);
    } else if (node.kind == RegexNodeKind::Run) {
      for (std::uint32_t byte = 0; byte < node.least; ++byte) add(node.table);
      if (node.firstMust) add(node.table);
      segments.emplace_back();
      // What follows comes after a byte of the run; after a plus, unless it matches the byte that
      // the plus gives back.
      if (node.least > 0 || (node.firstMust && node.exclusive)) add(node.table);
    } else if (node.kind == RegexNodeKind::BackRef || node.kind == RegexNodeKind::BackRefStar ||
               node.kind == RegexNodeKind::BackRefPlus) {
      segments.emplace_back();
    }
  }
  return segments;
}

// The two rarest bytes.
std::optional<RegexPlan::Probe> RegexPlan::ProbeOf(const Segment& segment) {
  struct Candidate {
    unsigned commonness;
    std::size_t at;
    ByteTest test;
  };
  std::vector<Candidate> candidates;
  for (std::size_t at = 0; at < segment.tables.size(); ++at) {
    const ByteTable& table = *segment.tables[at];
    if (std::none_of(table.begin(), table.end(), [](bool takes) { return takes; }))
      return std::nullopt;
    const ByteTest test = TestOf(table);
    candidates.push_back({Commonness(test), at, test});
  }
  if (candidates.empty()) return std::nullopt;
  std::stable_sort(
      candidates.begin(), candidates.end(),
      [](const Candidate& a, const Candidate& b) { return a.commonness < b.commonness; });
  const bool single = candidates.size() == 1;
  const Candidate& first = candidates[0];
  const Candidate& second = candidates[single ? 0 : 1];
  const unsigned chance = first.commonness * (single ? kAlways : second.commonness);
  if (chance > kTooCommon) return std::nullopt;
  return Probe{{WideTest(first.test), WideTest(second.test), first.at, second.at},
               segment.tables.size(),
               chance};
}

void RegexPlan::ChooseProbes() {
  for (const Segment& segment : Segments()) {
    const std::optional<Probe> probe = ProbeOf(segment);
    if (!probe) continue;
    std::optional<Probe>& place = segment.leads ? m_start : m_need;
    if (!place || probe->commonness < place->commonness) place = probe;
  }
  if (m_need && m_start && m_need->commonness * kMuchRarer > m_start->commonness) m_need.reset();
}

// Do two probed bytes make the whole pattern? Then every position found is a match.
bool RegexPlan::ProbesAll() const {
  if (!m_start || m_wordFlag || m_anchored || m_start->bytes > 2) return false;
  if (m_nodes.size() != m_start->bytes + 1) return false;
  const auto exact = [this](std::size_t node, const ByteTest& test) {
    const ByteTable& table = *m_nodes[node].table;
    for (std::size_t c = 0; c < table.size(); ++c)
      if (test.Takes(static_cast<unsigned char>(c)) != table[c]) return false;
    return true;
  };
  for (std::size_t i = 0; i < m_start->bytes; ++i)
    if (m_nodes[i].kind != RegexNodeKind::Byte) return false;
  const PairTest& pair = m_start->pair;
  return exact(pair.firstAt, pair.first.test) && exact(pair.secondAt, pair.second.test);
}

// `[a-z]*x` that fails at one position of a run fails at the others, because they lead to no new
// position after the run. Captures and word search could make a difference between the positions.
void RegexPlan::FindLeadingRun() {
  if (m_wordFlag || m_nodes.HasBackRefs()) return;
  std::size_t i = 0;
  while (m_nodes[i].kind == RegexNodeKind::GroupOpen ||
         m_nodes[i].kind == RegexNodeKind::GroupClose)
    ++i;
  const RegexNode& node = m_nodes[i];
  m_leadingRun =
      node.kind == RegexNodeKind::Run && node.least == 0 && node.more == RegexNode::kEndless;
  if (m_leadingRun && !node.notAtEnd && node.follow) m_leadingStar = &node;
}

// ---- the search

// A star may match nothing: what counts is where the rest can begin. The attempt begins as far
// before that position as the star reaches.
std::size_t RegexPlan::FindPlaceOfStar(std::string_view text, std::size_t from) const {
  const ByteTable& follow = *m_leadingStar->follow;
  const ByteTable& table = *m_leadingStar->table;
  std::size_t at = from;
  while (at < text.size() && !follow[static_cast<unsigned char>(text[at])]) ++at;
  if (at == text.size() && !follow[0]) return kNowhere;
  while (at > from && table[static_cast<unsigned char>(text[at - 1])]) --at;
  return at;
}

// The first position from `from` on, including the text's end, where an attempt may succeed.
std::size_t RegexPlan::FindPlace(std::string_view text, std::size_t from) const {
  if (m_start) return Find(*m_start, text, from);
  if (m_leadingStar) return FindPlaceOfStar(text, from);
  if (!m_anyFirst) {
    const ByteTable& first = m_nodes.First();
    while (from < text.size() && !first[static_cast<unsigned char>(text[from])]) ++from;
    if (from == text.size() && !first[0]) return kNowhere;
  }
  return from <= text.size() ? from : kNowhere;
}

std::size_t RegexPlan::PlaceAfterMiss(std::string_view text, std::size_t failed,
                                      std::size_t firstStop) const {
  if (m_anchored) return NextLine(text, failed);
  const bool ran = m_leadingRun && firstStop != RegexMachine::kUnset;
  const std::size_t next = (ran ? firstStop : failed) + 1;
  return next <= text.size() ? FindPlace(text, next) : kNowhere;
}

std::size_t RegexPlan::PlaceAfterMatch(std::string_view text, std::size_t from) const {
  return m_anchored ? NextLine(text, from - 1) : FindPlace(text, from);
}

// Do the bytes fit the sets that a match begins with? REQUIRES: those of m_start are in them.
bool RegexPlan::LeadsAt(std::string_view bytes, std::size_t place) const {
  for (std::size_t i = 0; i < m_start->bytes && m_nodes[i].kind == RegexNodeKind::Byte; ++i)
    if (!(*m_nodes[i].table)[static_cast<unsigned char>(bytes[place + i])]) return false;
  return true;
}

std::size_t RegexPlan::FindBytes(std::string_view bytes, std::size_t from) const {
  const bool byNeed = m_need && (!m_start || m_need->commonness < m_start->commonness);
  if (byNeed) return Find(*m_need, bytes, from);
  for (; (from = Find(*m_start, bytes, from)) != kNowhere; ++from)
    if (LeadsAt(bytes, from)) return from;
  return kNowhere;
}
