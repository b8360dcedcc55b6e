#include "tree/regex/plan/regex_machine.h"

#include <algorithm>

#include "tree/regex/program/ascii.h"

namespace {

// A run of so many bytes counts as one step more.
constexpr unsigned kBytesPerStepBits = 4;

unsigned char Read(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

// The first position in [at, limit) whose byte is not in the table, else limit.
std::size_t RunOf(const ByteTable& table, std::string_view text, std::size_t at,
                  std::size_t limit) {
  while (at < limit && table[static_cast<unsigned char>(text[at])]) ++at;
  return at;
}

std::int64_t StepsFor(std::size_t bytes) {
  return static_cast<std::int64_t>(bytes >> kBytesPerStepBits);
}

}  // namespace

RegexRun RegexMachine::Begin(const RegexNodes& nodes, std::string_view text, std::size_t at,
                             bool wordFlag, std::int64_t& steps) {
  m_node = m_depth = 0;
  m_at = at;
  m_firstStop = kUnset;
  m_wordFlag = wordFlag;
  if (nodes.HasGroups() || nodes.HasBackRefs()) m_groups.fill({});
  if (wordFlag && at > 0 && IsWordByte(Read(text, at - 1))) return RegexRun::Miss;
  return Resume(nodes, text, steps);
}

RegexRun RegexMachine::Resume(const RegexNodes& nodes, std::string_view text, std::int64_t& steps) {
  for (;;) {
    const RegexNode& node = nodes[m_node];
    bool holds = true;
    if (node.kind == RegexNodeKind::Byte) {
      holds = (*node.table)[Read(text, m_at)];
      m_at = std::min(m_at + 1, text.size());
      ++m_node;
    } else if (node.kind == RegexNodeKind::Run) {
      holds = EnterRun(node, text, steps);
    } else if (node.kind == RegexNodeKind::End) {
      if (!m_wordFlag || !IsWordByte(Read(text, m_at))) return RegexRun::Hit;
      // The inner runs have been tried; the first one continues as if it had failed.
      m_depth = std::min(m_depth, std::size_t{1});
      if (m_depth == 1) m_frames[0].once = false;
      holds = false;
    } else {
      holds = StepNode(node, text, steps);
    }
    if (!holds && !BackOff(nodes, text, steps)) return RegexRun::Miss;
    if (--steps < 0) return RegexRun::Unfinished;
  }
}

// The nodes without repetition. False when the node does not match.
bool RegexMachine::StepNode(const RegexNode& node, std::string_view text, std::int64_t& steps) {
  switch (node.kind) {
    case RegexNodeKind::EndOfLine:
      if (!(*node.table)[Read(text, m_at)]) return false;
      break;
    case RegexNodeKind::GroupOpen:
      m_groups[node.group].start = m_at;
      break;
    case RegexNodeKind::GroupClose:
      m_groups[node.group].end = m_at;
      break;
    case RegexNodeKind::BackRef: {
      const Capture& capture = m_groups[node.group];
      if (!Fits(capture, text)) return false;
      steps -= StepsFor(capture.end - capture.start);
      m_at = std::min(m_at + (capture.end - capture.start), text.size());
      break;
    }
    case RegexNodeKind::BackRefStar:
    case RegexNodeKind::BackRefPlus:
      return EnterBackRef(node, text, steps);
    default:
      return false;
  }
  ++m_node;
  return true;
}

bool RegexMachine::EnterRun(const RegexNode& node, std::string_view text, std::int64_t& steps) {
  const ByteTable& table = *node.table;
  const std::size_t at = m_at, end = text.size();
  if (node.notAtEnd && at >= end) return false;
  if (node.firstMust && !table[static_cast<unsigned char>(text[at])]) return false;
  std::size_t floor = at, stop;
  if (node.more == RegexNode::kEndless) {
    stop = RunOf(table, text, at, end);
  } else {
    floor += std::min<std::size_t>(node.least, end - at);
    m_rangeLow = static_cast<int>(at + node.least - RunOf(table, text, at, floor));
    if (m_rangeLow > 0) return false;
    stop = RunOf(table, text, floor, floor + std::min<std::size_t>(node.more, end - floor));
    m_rangeExtra = static_cast<int>(node.more - (stop - floor));
  }
  if (m_firstStop == kUnset) m_firstStop = stop;
  steps -= StepsFor(stop - at);
  // With word search the first run must be on the stack, also if it gives nothing back.
  if (m_wordFlag || !node.exclusive)
    m_frames[m_depth++] = {m_node, node.exclusive ? stop : floor, stop, 1, false};
  m_at = stop;
  ++m_node;
  return !node.follow || (*node.follow)[Read(text, stop)];
}

// An empty capture is matched once: repeating it would never end.
bool RegexMachine::EnterBackRef(const RegexNode& node, std::string_view text, std::int64_t& steps) {
  const Capture& capture = m_groups[node.group];
  if (!capture.IsSet()) return false;
  const std::size_t floor = m_at;
  const std::size_t length = capture.end - capture.start;
  while (length > 0 && length <= text.size() - m_at && Fits(capture, text)) {
    m_at += length;
    steps -= 1 + StepsFor(length);
  }
  // Kept: the plus needs no occurrence at all, and it gives back nothing when the rest fails at its
  // end.
  const bool once = node.kind == RegexNodeKind::BackRefPlus;
  m_frames[m_depth++] = {m_node, floor, m_at, std::max<std::size_t>(length, 1), once};
  ++m_node;
  return true;
}

// Like a comparison of strings: a zero on both sides ends it.
bool RegexMachine::Fits(const Capture& capture, std::string_view text) const {
  if (!capture.IsSet()) return false;
  for (std::size_t i = capture.start, at = m_at; i < capture.end; ++i, ++at) {
    const unsigned char c = Read(text, i);
    if (c != Read(text, at)) return false;
    if (c == 0) return true;
  }
  return true;
}

// Returns to the latest run that can give a byte back; false when there is none.
bool RegexMachine::BackOff(const RegexNodes& nodes, std::string_view text, std::int64_t& steps) {
  for (; m_depth > 0; --m_depth) {
    Frame& frame = m_frames[m_depth - 1];
    if (frame.once) continue;
    const ByteTable* const follow = nodes[frame.node].follow;
    const std::size_t from = frame.next;
    bool found = false;
    while (!found && frame.next > frame.floor) {
      frame.next -= frame.step;
      found = !follow || (*follow)[Read(text, frame.next)];
    }
    steps -= StepsFor(from - frame.next);
    if (!found) continue;
    m_at = frame.next;
    m_node = frame.node + 1;
    return true;
  }
  return false;
}
