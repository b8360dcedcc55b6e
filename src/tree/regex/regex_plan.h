// How the pattern last prepared is searched in a text: which places are worth an attempt, what must
// stand somewhere for the text to be worth one, and when an attempt's failure speaks for others
// too. The answer is the one that trying every place in turn gives.
//
// Owner    Owns the decoded program and the machine; borrows the text for each call only.
// Errors   None. Making a plan allocates; searching does not.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tree/regex/byte_scan.h"
#include "tree/regex/regex.h"
#include "tree/regex/regex_machine.h"
#include "tree/regex/regex_nodes.h"

class RegexPlan {
 public:
  // For RegexState as it is now: its program, wordSearch, anchored and acrossLines.
  RegexPlan();

  // A search stops when `steps` are used up, and goes on with Resume and the same text.
  RegexAnswer Begin(std::string_view text, std::int64_t steps);
  RegexAnswer Resume(std::string_view text, std::int64_t steps);
  // Behind a Yes: a further match, which begins where that one ends or behind it.
  RegexAnswer Next(std::string_view text, std::int64_t steps);

  // Behind a Yes, counted from the text's start.
  std::size_t MatchStart() const { return m_place; }
  std::size_t MatchEnd() const { return m_matchEnd; }
  // Of those that the call was given.
  std::int64_t StepsLeft() const { return m_stepsLeft; }
  const RegexMachine& Machine() const { return m_machine; }
  const RegexNodes& Nodes() const { return m_nodes; }

 private:
  // Consecutive places of a match whose bytes are known to be of some set.
  struct Segment {
    std::vector<const ByteTable*> tables;
    bool leads = false;  // it begins where the match begins
  };
  // Two tests for a segment.
  struct Probe {
    PairTest pair;
    std::size_t bytes = 0;    // of the segment
    unsigned commonness = 0;  // how often it holds by chance, a guess
  };
  std::vector<Segment> Segments() const;
  static std::optional<Probe> ProbeOf(const Segment& segment);
  void ChooseProbes();
  void FindLeadingRun();
  bool ProbesAll() const;

  static std::size_t Find(const Probe& probe, std::string_view text, std::size_t from);
  std::size_t FindPlaceOfStar(std::string_view text, std::size_t from) const;
  std::size_t FindPlace(std::string_view text, std::size_t from) const;
  std::size_t NextPlace(std::string_view text) const;
  bool MayMatchFrom(std::string_view text, std::size_t place);
  RegexAnswer BeginAt(std::string_view text, std::size_t place, std::int64_t steps);
  RegexAnswer Try(std::string_view text, RegexRun run, std::int64_t& steps);

  RegexNodes m_nodes;
  bool m_anchored, m_wordFlag;
  bool m_never = false;          // a node fails always
  std::optional<Probe> m_start;  // where a match can begin
  std::optional<Probe> m_need;   // what a match holds somewhere
  bool m_anyFirst = false;       // a match can begin with any byte
  // An endless run begins the program, and its failure speaks for every place of it.
  bool m_leadingRun = false;
  // That run, if it is a star and only some bytes can follow it.
  const RegexNode* m_leadingStar = nullptr;
  bool m_probesAll = false;  // a place that m_start finds is a match

  RegexMachine m_machine;
  bool m_unfinished = false;
  std::size_t m_place = 0;  // of the attempt
  std::size_t m_matchEnd = 0;
  std::int64_t m_stepsLeft = 0;
  std::size_t m_needAt = 0;  // the probe of m_need holds here; kNowhere before it was looked for
};
