// A slow, simple matcher to test the fast one against. It reads the compiled program opcode by
// opcode and tries every position of the text, with one recursion per run. It shares no code with
// the fast one.
//
// Shape    Positions are counted from the text's start. No position is beyond the end, where a read
//          gives zero and no run continues.
// Errors   An attempt that takes too long gives up: GaveUp() says so, and its answer is not valid.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "support/regex_oracle_item.h"
#include "tree/regex/regex_state.h"

class RegexOracle {
 public:
  struct Match {
    std::size_t start, end;
  };

  // For the pattern in RegexState, which must not change meanwhile.
  RegexOracle(std::string_view text, std::uint64_t budget = 2'000'000)
      : m_text(text), m_budget(budget) {}

  bool GaveUp() const { return m_budget == 0; }

  // The answer of RegexSearch.
  std::optional<Match> Search(std::size_t from) {
    if (RegexState.anchored) return Try(from, false);
    for (std::size_t at = from; at <= m_text.size(); ++at)
      if (const auto match = Try(at, RegexState.wordSearch != 0)) return match;
    return std::nullopt;
  }

  // The answer of RegexMatchText.
  std::optional<Match> SearchText() {
    if (!RegexState.anchored) return Search(0);
    if (m_text.empty()) return std::nullopt;
    for (std::size_t at = 0;;) {
      if (const auto match = Search(at)) return match;
      ++at;
      while (at < m_text.size() && Get(at) != '\r' && Get(at) != '\n') ++at;
      if (at >= m_text.size()) return std::nullopt;
      const unsigned char end = Get(at++);
      if (at < m_text.size() && Get(at) == (end == '\r' ? '\n' : '\r')) ++at;
      if (at >= m_text.size()) return std::nullopt;
    }
  }

 private:
  static constexpr std::size_t kUnset = static_cast<std::size_t>(-1);

  unsigned char Get(std::size_t at) const {
    return at < m_text.size() ? static_cast<unsigned char>(m_text[at]) : 0;
  }
  std::size_t Forward(std::size_t at, std::size_t by) const {
    return at + by < m_text.size() ? at + by : m_text.size();
  }
  static bool IsWord(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  }

  std::optional<Match> Try(std::size_t at, bool wordFlag) {
    for (int group = 0; group < kRegexGroups; ++group) m_start[group] = m_end[group] = kUnset;
    std::size_t end = 0;
    if (!MatchHere(at, 0, wordFlag, end)) return std::nullopt;
    return Match{at, end};
  }

  bool MatchHere(std::size_t at, std::size_t code, bool wordFlag, std::size_t& end) {
    if (wordFlag && at > 0 && IsWord(Get(at - 1))) return false;
    for (;;) {
      if (m_budget == 0 || --m_budget == 0) return false;
      const int opcode = OracleCode(code++);
      if (opcode < 0) return false;
      if (opcode == RX_END) {
        if (wordFlag && IsWord(Get(at))) return false;
        end = at;
        return true;
      }
      if (opcode == RX_END_OF_LINE) {
        const unsigned char next = Get(at);
        if (next != 0 && next != '\n' && next != '\r') return false;
      } else if (opcode == RX_GROUP_OPEN || opcode == RX_GROUP_CLOSE) {
        const int group = OracleCode(code++);
        if (group < 0) return false;
        if (group < kRegexGroups) (opcode == RX_GROUP_OPEN ? m_start : m_end)[group] = at;
      } else if (opcode >= RX_BACKREF && opcode <= RX_BACKREF_PLUS) {
        const int group = OracleCode(code++);
        if (group < 0 || group >= kRegexGroups) return false;
        if (m_start[group] == kUnset || m_end[group] == kUnset || m_end[group] < m_start[group])
          return false;
        if (opcode != RX_BACKREF) return RunOfCapture(at, group, code, opcode, wordFlag, end);
        if (!SameAsCapture(at, group)) return false;
        at = Forward(at, m_end[group] - m_start[group]);
      } else if (const auto operands = OracleItem::OperandsOf(opcode & ~3)) {
        if (code + *operands + ((opcode & 3) == RX_RANGE ? 2 : 0) > kOracleCodeEnd) return false;
        const OracleItem item{opcode & ~3, code, (opcode & 3) == RX_STAR};
        code += *operands;
        if ((opcode & 3) != RX_ONCE) return Run(at, item, opcode & 3, code, wordFlag, end);
        if (!item.Takes(Get(at))) return false;
        at = Forward(at, 1);
      }
    }
  }

  bool Run(std::size_t at, const OracleItem& item, int repeat, std::size_t code, bool wordFlag,
           std::size_t& end) {
    std::size_t floor = at;
    std::size_t most = kUnset;
    if (repeat == RX_PLUS) {
      if (at >= m_text.size()) return false;
      if (item.kind != RX_ANY && !item.Takes(Get(at))) return false;
    } else if (repeat == RX_RANGE) {
      const int minimum = RegexState.program[code], maximum = RegexState.program[code + 1];
      code += 2;
      for (int i = 0; i < minimum; ++i) {
        if (at >= m_text.size() || !item.Takes(Get(at))) return false;
        ++at;
      }
      floor = at;
      most = maximum == 255 ? 20010u : maximum > minimum ? std::size_t(maximum - minimum) : 0;
    }
    for (std::size_t i = 0; i < most && at < m_text.size() && item.Takes(Get(at)); ++i) ++at;
    for (;; --at) {
      if (Rest(at, code, wordFlag, end)) return true;
      if (at <= floor || GaveUp()) return false;
    }
  }

  // One attempt of the rest after a run; the run itself checks the end of a word.
  bool Rest(std::size_t at, std::size_t code, bool wordFlag, std::size_t& end) {
    return MatchHere(at, code, false, end) && (!wordFlag || !IsWord(Get(end)));
  }

  bool SameAsCapture(std::size_t at, int group) const {
    for (std::size_t i = m_start[group]; i < m_end[group]; ++i, ++at) {
      if (Get(i) != Get(at)) return false;
      if (Get(i) == 0) return true;
    }
    return true;
  }

  bool RunOfCapture(std::size_t at, int group, std::size_t code, int opcode, bool wordFlag,
                    std::size_t& end) {
    const std::size_t length = m_end[group] - m_start[group], floor = at;
    while (length > 0 && at + length <= m_text.size() && SameAsCapture(at, group)) at += length;
    if (opcode == RX_BACKREF_PLUS && !MatchHere(at, code, false, end)) return false;
    for (;;) {
      if (Rest(at, code, wordFlag, end)) return true;
      if (length == 0 || at < floor + length || GaveUp()) return false;
      at -= length;
    }
  }

  std::string_view m_text;
  std::uint64_t m_budget;
  std::size_t m_start[kRegexGroups] = {}, m_end[kRegexGroups] = {};
};
