// A compiled program, decoded: a node per opcode, and a table of 256 truth values per set. A
// program has no jumps, so one decoding from front to back is enough, for any bytes.
//
// Owner    Nodes own their tables. Decoding allocates; running does not.
// Errors   After the end of the code comes a node that fails. An invalid group number makes no
//          node.
// Threads  Never changes once it is made.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "tree/regex/program/regex_program.h"

// Which byte values match. The end of the text reads as zero.
using ByteTable = std::array<bool, 256>;

enum class RegexNodeKind : std::uint8_t {
  Byte,        // one byte of the table
  Run,         // a repeated byte of the table
  EndOfLine,   // asserts the table, consumes nothing
  GroupOpen,   // stores the position
  GroupClose,  // stores the position
  BackRef,
  BackRefStar,
  BackRefPlus,
  End,
  Fail,
};

struct RegexNode {
  static constexpr std::uint32_t kEndless = std::numeric_limits<std::uint32_t>::max();

  RegexNodeKind kind = RegexNodeKind::Fail;
  std::uint8_t group = 0;
  // Run: `least` bytes, then up to `more`, which can be given back one by one.
  std::uint32_t least = 0;
  std::uint32_t more = 0;
  bool notAtEnd = false;   // Run: fails at the text's end
  bool firstMust = false;  // Run: fails unless the first byte matches, though it can be given back
  bool exclusive = false;  // Run: what follows can match at no byte of the run
  const ByteTable* table = nullptr;
  const ByteTable* follow = nullptr;  // Run: bytes at which the rest can match; null: any
};

class RegexNodes {
 public:
  explicit RegexNodes(const RegexProgram& program);
  // Decodes [code, codeEnd) up to its RX_END. `acrossLines` as in RegexOptions.
  RegexNodes(const unsigned char* code, const unsigned char* codeEnd, bool acrossLines);
  RegexNodes(RegexNodes&&) = default;
  RegexNodes& operator=(RegexNodes&&) = default;

  const RegexNode& operator[](std::size_t i) const { return m_nodes[i]; }
  std::size_t size() const { return m_nodes.size(); }
  // Bytes at which node i and the nodes after it can begin a match.
  const ByteTable& First() const { return *m_first; }
  bool HasBackRefs() const { return m_backRefs; }
  bool HasGroups() const { return m_groups; }
  bool HasRanges() const { return m_ranges; }
  // Does a table accept the zero that represents the text's end? Never in the program of a complete
  // pattern.
  bool TakesZero() const { return m_takesZero; }

 private:
  class Decoder;
  ByteTable* NewTable();
  void FindFollowers();
  bool CapturesBehindReference() const;

  std::vector<RegexNode> m_nodes;
  std::vector<std::unique_ptr<ByteTable>> m_tables;
  const ByteTable* m_first = nullptr;
  bool m_backRefs = false;
  bool m_groups = false;
  bool m_ranges = false;
  bool m_takesZero = false;
};
