// A plan for searching the prepared pattern in a text: at which positions to try it, which bytes
// must occur somewhere for the text to be worth a try, and when a failed attempt rules out other
// positions too. The answer is the same as that of trying every position in turn.
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
  // For the current RegexState: its program, wordSearch, anchored and acrossLines.
  RegexPlan();

  // A search stops when `steps` are used up; continue with Resume and the same text.
  RegexAnswer Begin(std::string_view text, std::int64_t steps);
  RegexAnswer Resume(std::string_view text, std::int64_t steps);
  // After a Yes: searches the next match, which begins at the end of the last one or later.
  RegexAnswer Next(std::string_view text, std::int64_t steps);

  // After a Yes, counted from the text's start.
  std::size_t MatchStart() const { return m_place; }
  std::size_t MatchEnd() const { return m_matchEnd; }
  // What is left of the steps of the call.
  std::int64_t StepsLeft() const { return m_stepsLeft; }
  const RegexMachine& Machine() const { return m_machine; }
  const RegexNodes& Nodes() const { return m_nodes; }

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
    unsigned commonness = 0;  // an estimate of how often it holds by chance
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
  bool m_never = false;          // a node always fails
  std::optional<Probe> m_start;  // where a match can begin
  std::optional<Probe> m_need;   // must hold somewhere in a match
  bool m_anyFirst = false;       // a match can begin with any byte
  // The program begins with an unlimited run, whose failure applies to every position of the run.
  bool m_leadingRun = false;
  // That run, if it is a star and only some bytes can follow it.
  const RegexNode* m_leadingStar = nullptr;
  bool m_probesAll = false;  // every position that m_start finds is a match

  RegexMachine m_machine;
  bool m_unfinished = false;
  std::size_t m_place = 0;  // of the attempt
  std::size_t m_matchEnd = 0;
  std::int64_t m_stepsLeft = 0;
  std::size_t m_needAt = 0;  // a position where m_need holds; kNowhere before it is searched
};
