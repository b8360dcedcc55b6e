#include "tree/regex/plan/regex_nodes.h"

#include <algorithm>

#include "tree/regex/program/ascii.h"

namespace {

ByteTable All() {
  ByteTable table;
  table.fill(true);
  return table;
}

// The bytes before which `$` matches.
ByteTable EndsOfLine() {
  ByteTable table = {};
  table[0] = table[kLf] = table[kCr] = true;
  return table;
}

bool Meet(const ByteTable& a, const ByteTable& b) {
  for (std::size_t c = 0; c < a.size(); ++c)
    if (a[c] && b[c]) return true;
  return false;
}

}  // namespace

// Reads the code byte by byte. If it stops without RX_END nothing matches.
class RegexNodes::Decoder {
 public:
  Decoder(RegexNodes& nodes, const unsigned char* code, const unsigned char* end, bool acrossLines)
      : m_nodes(nodes), m_code(code), m_end(end), m_acrossLines(acrossLines) {}

  void Run() {
    for (;;) {
      if (m_code == m_end) return Add({.kind = RegexNodeKind::Fail});
      const unsigned char opcode = *m_code++;
      if (opcode == RX_END) return Add({.kind = RegexNodeKind::End});
      if (!Decode(opcode)) return Add({.kind = RegexNodeKind::Fail});
    }
  }

 private:
  // False when an operand is missing.
  bool Decode(unsigned char opcode) {
    switch (opcode) {
      case RX_GROUP_OPEN:
        return Group(RegexNodeKind::GroupOpen);
      case RX_GROUP_CLOSE:
        return Group(RegexNodeKind::GroupClose);
      case RX_BACKREF:
        return Group(RegexNodeKind::BackRef);
      case RX_BACKREF_STAR:
        return Group(RegexNodeKind::BackRefStar);
      case RX_BACKREF_PLUS:
        return Group(RegexNodeKind::BackRefPlus);
      case RX_END_OF_LINE:
        Add({.kind = RegexNodeKind::EndOfLine, .table = Table(EndsOfLine())});
        return true;
      default:
        return Repeatable(opcode);
    }
  }

  bool Repeatable(unsigned char opcode) {
    const int kind = opcode & ~RX_RANGE;
    const auto repeat = static_cast<RegexRepeat>(opcode & RX_RANGE);
    ByteTable table = {};
    switch (kind) {
      case RX_CHAR:
        if (Left() < 1) return false;
        table[*m_code++] = true;
        break;
      case RX_ANY:
        table = All();
        table[0] = false;
        if (!m_acrossLines) table[kCr] = table[kLf] = false;
        break;
      case RX_SET:
      case RX_NEG_SET:
        if (Left() < kRegexSetBytes) return false;
        ReadBits(table, kRegexSetBytes);
        if (kind == RX_NEG_SET) Invert(table);
        // Kept: only the starred narrow sets end at a line's end.
        if (repeat == RX_STAR && !m_acrossLines) table[kCr] = table[kLf] = table[0];
        break;
      case RX_WIDE_SET:
        if (Left() < kRegexWideSetBytes) return false;
        ReadBits(table, kRegexWideSetBytes);
        break;
      default:
        return true;  // no opcode: skipped
    }
    return Item(kind, repeat, table);
  }

  bool Item(int kind, RegexRepeat repeat, const ByteTable& table) {
    RegexNode node{.kind = RegexNodeKind::Run, .more = RegexNode::kEndless, .table = Table(table)};
    if (repeat == RX_ONCE) {
      node.kind = RegexNodeKind::Byte;
    } else if (repeat == RX_PLUS) {
      // Kept: the floor of a plus is before its first byte, so that this byte can be given back;
      // and `.+` does not even require it.
      node.notAtEnd = true;
      node.firstMust = kind != RX_ANY;
    } else if (repeat == RX_RANGE) {
      if (Left() < 2) return false;
      m_nodes.m_ranges = true;
      node.least = m_code[0];
      const int most = m_code[1];
      m_code += 2;
      const int more = most - static_cast<int>(node.least);
      node.more = static_cast<std::uint32_t>(most == kRegexUnlimited ? kRegexMostUnlimited
                                                                     : std::max(more, 0));
    }
    Add(node);
    return true;
  }

  bool Group(RegexNodeKind kind) {
    if (Left() < 1) return false;
    const unsigned char group = *m_code++;
    const bool refers = kind != RegexNodeKind::GroupOpen && kind != RegexNodeKind::GroupClose;
    if (group < kRegexGroups) {
      m_nodes.m_backRefs |= refers;
      m_nodes.m_groups |= !refers;
      Add({.kind = kind, .group = group});
    } else if (refers) {
      Add({.kind = RegexNodeKind::Fail});  // a capture that cannot be set
    }
    return true;
  }

  std::size_t Left() const { return static_cast<std::size_t>(m_end - m_code); }

  void ReadBits(ByteTable& table, std::size_t bytes) {
    for (std::size_t c = 0; c < bytes * 8; ++c) table[c] = (m_code[c >> 3] >> (c & 7)) & 1;
    m_code += bytes;
  }
  static void Invert(ByteTable& table) {
    for (bool& taken : table) taken = !taken;
  }
  const ByteTable* Table(const ByteTable& wanted) {
    for (const auto& table : m_nodes.m_tables)
      if (*table == wanted) return table.get();
    ByteTable* const table = m_nodes.NewTable();
    *table = wanted;
    return table;
  }
  void Add(const RegexNode& node) { m_nodes.m_nodes.push_back(node); }

  RegexNodes& m_nodes;
  const unsigned char* m_code;
  const unsigned char* m_end;
  bool m_acrossLines;
};

RegexNodes::RegexNodes(const RegexProgram& program)
    : RegexNodes(program.Code().data(), program.Code().data() + program.Code().size(),
                 program.AcrossLines()) {}

RegexNodes::RegexNodes(const unsigned char* code, const unsigned char* codeEnd, bool acrossLines) {
  Decoder(*this, code, codeEnd, acrossLines).Run();
  for (const RegexNode& node : m_nodes)
    if (node.kind == RegexNodeKind::Byte || node.kind == RegexNodeKind::Run)
      m_takesZero |= (*node.table)[0];
  FindFollowers();
}

ByteTable* RegexNodes::NewTable() {
  m_tables.push_back(std::make_unique<ByteTable>());
  return m_tables.back().get();
}

// Does a group follow a reference to it? No pattern compiles to that, but its operands read as
// opcodes may. Then a failed attempt of the rest leaves captures behind, and no attempt may be left
// out.
bool RegexNodes::CapturesBehindReference() const {
  std::array<bool, kRegexGroups> referred = {};
  for (const RegexNode& node : m_nodes) {
    const bool notes =
        node.kind == RegexNodeKind::GroupOpen || node.kind == RegexNodeKind::GroupClose;
    if (notes && referred[node.group]) return true;
    if (node.kind == RegexNodeKind::BackRef || node.kind == RegexNodeKind::BackRefStar ||
        node.kind == RegexNodeKind::BackRefPlus)
      referred[node.group] = true;
  }
  return false;
}

// From the last node to the first: at which bytes can the node and the rest match? Bytes may be
// included that cannot, but none may be missing.
void RegexNodes::FindFollowers() {
  const bool recaptures = CapturesBehindReference();
  ByteTable first = {};
  for (auto node = m_nodes.rbegin(); node != m_nodes.rend(); ++node) {
    switch (node->kind) {
      case RegexNodeKind::Byte:
      case RegexNodeKind::EndOfLine:
        first = *node->table;
        break;
      case RegexNodeKind::Run: {
        if (!recaptures && first != All()) {
          ByteTable* const follow = NewTable();
          *follow = first;
          node->follow = follow;
          node->exclusive = !Meet(*node->table, first);
        }
        if (node->least > 0 || node->firstMust) {
          first = *node->table;
        } else {
          for (std::size_t c = 0; c < first.size(); ++c) first[c] = first[c] || (*node->table)[c];
        }
        break;
      }
      case RegexNodeKind::GroupOpen:
      case RegexNodeKind::GroupClose:
        break;
      case RegexNodeKind::Fail:
        first = {};
        break;
      default:  // the end, and captures, which may be empty
        first = All();
    }
  }
  ByteTable* const table = NewTable();
  *table = first;
  m_first = table;
}
