// A plan for searching a program in texts: at which positions to try it, which bytes must occur
// somewhere for a text to be worth a try, and when a failed attempt rules out other positions too.
// The answer is the same as that of trying every position in turn.
//
// Positions are counted from the text's start; the end of the text is one too.
//
// Owner    Owns the decoded program; borrows the text for each call only.
// Errors   None. Making a plan allocates; asking it does not.
// Threads  Never changes once it is made, so threads may share it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tree/regex/plan/byte_scan.h"
#include "tree/regex/plan/regex_nodes.h"

class RegexPlan {
 public:
  explicit RegexPlan(const RegexProgram& program);
  RegexPlan(RegexPlan&&) = default;
  RegexPlan& operator=(RegexPlan&&) = default;

  const RegexNodes& Nodes() const { return m_nodes; }
  // For RegexMachine::Begin.
  bool WordFlag() const { return m_wordFlag; }

  bool CanMatch(std::string_view text) const { return !m_never && !(m_anchored && text.empty()); }
  // The first position where an attempt may succeed, kNowhere for none: of the text; after an
  // attempt that failed, with its RegexMachine::FirstStop; after a match, from `from` on.
  std::size_t FirstPlace(std::string_view text) const {
    if (m_anchored) return 0;
    return m_start ? Find(*m_start, text, 0) : FindPlace(text, 0);
  }
  std::size_t PlaceAfterMiss(std::string_view text, std::size_t failed,
                             std::size_t firstStop) const;
  std::size_t PlaceAfterMatch(std::string_view text, std::size_t from) const;

  // Something rarer than a beginning must occur in each match.
  bool HasNeed() const { return m_need.has_value(); }
  // It is searched first: if a star begins the pattern, the rest is rarer.
  bool LooksForNeedFirst() const { return m_leadingStar && m_need; }
  // The first position of it from `from` on, kNowhere for none.
  std::size_t FindNeed(std::string_view text, std::size_t from) const {
    return Find(*m_need, text, from);
  }
  // For a search over the bytes of many texts at once: bytes that each match has. The first
  // position where they may stand, from `from` on, kNowhere for none.
  bool KnowsBytes() const { return m_start || m_need; }
  std::size_t FindBytes(std::string_view bytes, std::size_t from) const;
  // If every position found is a match: its length, else 0.
  std::size_t WholeBytes() const { return m_wholeBytes; }

 private:
  // Consecutive positions of a match whose bytes belong to known sets.
  struct Segment {
    std::vector<const ByteTable*> tables;
    bool leads = false;  // it begins where the match begins
  };
  // Two tests for a segment.
  struct Probe {
    PairTest pair;
    std::size_t bytes = 0;    // of the segment
    unsigned commonness = 0;  // how often it holds by chance, an estimate
  };
  std::vector<Segment> Segments() const;
  static std::optional<Probe> ProbeOf(const Segment& segment);
  void ChooseProbes();
  void FindLeadingRun();
  bool ProbesAll() const;

  static std::size_t Find(const Probe& probe, std::string_view text, std::size_t from) {
    if (text.size() < probe.bytes) return kNowhere;
    return FindPair(text, from, text.size() - probe.bytes + 1, probe.pair);
  }
  bool LeadsAt(std::string_view bytes, std::size_t place) const;
  std::size_t FindPlaceOfStar(std::string_view text, std::size_t from) const;
  std::size_t FindPlace(std::string_view text, std::size_t from) const;

  RegexNodes m_nodes;
  bool m_anchored, m_wordFlag;
  bool m_never = false;          // a node always fails
  std::optional<Probe> m_start;  // where a match can begin
  std::optional<Probe> m_need;   // must hold somewhere in a match
  bool m_anyFirst = false;       // a match can begin with any byte
  // The program begins with an unlimited run, whose failure applies to every position of the run.
  bool m_leadingRun = false;
  // That run, if it is a star and only some bytes can follow it.
  const RegexNode* m_leadingStar = nullptr;
  std::size_t m_wholeBytes = 0;
};
