// Runs decoded nodes at one position of a text. A repetition takes as much as possible and gives
// bytes back one by one; a stack holds the repetitions that can still give back. An attempt can be
// stopped in the middle and resumed.
//
// Shape    Positions are counted from the text's start and never leave the text. A position beyond
//          the end becomes the end, where every read gives zero and no repetition continues.
// Owner    Borrows nodes and text for each call only. Between the calls of one attempt both must
//          have the same content, though the text may be at another address.
// Errors   None. An attempt always ends.
// Threads  One at a time.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "tree/regex/plan/regex_nodes.h"

enum class RegexRun { Miss, Hit, Unfinished };

class RegexMachine {
 public:
  // Tries the nodes at `at`, with no captures yet. With wordFlag the match must not have a word
  // byte on either side; as kept, only the first repetition of the program gives bytes back for
  // that. Decreases `steps` by the work done; Unfinished when they are used up.
  RegexRun Begin(const RegexNodes& nodes, std::string_view text, std::size_t at, bool wordFlag,
                 std::int64_t& steps);
  RegexRun Resume(const RegexNodes& nodes, std::string_view text, std::int64_t& steps);

  std::size_t MatchEnd() const { return m_at; }  // after a Hit
  // The end of the program's first repetition in this attempt; kUnset if it was not reached.
  std::size_t FirstStop() const { return m_firstStop; }
  static constexpr std::size_t kUnset = static_cast<std::size_t>(-1);
  std::size_t GroupStart(int group) const {
    return m_groups[static_cast<std::size_t>(group)].start;
  }
  std::size_t GroupEnd(int group) const { return m_groups[static_cast<std::size_t>(group)].end; }
  // Of the range that was run last: repetitions that were left of the mandatory ones, and of the
  // optional ones.
  int RangeLow() const { return m_rangeLow; }
  int RangeExtra() const { return m_rangeExtra; }

 private:
  // A repetition that can still give bytes back.
  struct Frame {
    std::size_t node;
    std::size_t floor;  // the lowest position to continue from
    std::size_t next;   // the position tried last
    std::size_t step;   // bytes given back at a time
    bool once;          // fails with its first failure, until the rest has matched once
  };
  struct Capture {
    bool IsSet() const { return start != kUnset && end != kUnset && start <= end; }
    std::size_t start = kUnset, end = kUnset;
  };
  static constexpr std::size_t kFramesMax = kRegexProgramBytes + kRegexSlackBytes;

  bool StepNode(const RegexNode& node, std::string_view text, std::int64_t& steps);
  bool EnterRun(const RegexNode& node, std::string_view text, std::int64_t& steps);
  bool EnterBackRef(const RegexNode& node, std::string_view text, std::int64_t& steps);
  bool Fits(const Capture& capture, std::string_view text) const;
  bool BackOff(const RegexNodes& nodes, std::string_view text, std::int64_t& steps);

  std::size_t m_node = 0, m_at = 0;
  std::size_t m_firstStop = 0;
  bool m_wordFlag = false;
  int m_rangeLow = 0, m_rangeExtra = 0;
  std::size_t m_depth = 0;
  std::array<Frame, kFramesMax> m_frames;
  std::array<Capture, kRegexGroups> m_groups;
};
