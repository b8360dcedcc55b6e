#include "tree/proc/model/proc_labels.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"
#include "records/timer.h"
#include "records/trace_event.h"
#include "tree/proc/model/proc_items.h"

namespace {

// The one timer of the program that formats tic counts. It is made at its first use and released at
// the program's end.
class SpanTimer {
 public:
  SpanTimer() : m_timer(CreateTimer()) { m_timer->AddRef(); }
  ~SpanTimer() { m_timer->Release(); }
  SpanTimer(const SpanTimer&) = delete;
  SpanTimer& operator=(const SpanTimer&) = delete;

  // Kept: tics are taken for picoseconds. Safe: an application's tics are picoseconds already.
  std::string Format(std::int64_t tics) {
    m_timer->SetPicoseconds(static_cast<double>(tics));
    return m_timer->Format();
  }

 private:
  trc_Timer_i* const m_timer;
};

std::string Span(const CExecutionBlock& node) {
  static SpanTimer timer;
  return timer.Format(node.duration);
}

// Bytes 10xxxxxx continue a character.
bool BeginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::string BehindSevenCharacters(std::string text) {
  std::size_t at = 0;
  for (int left = 7; left > 0 && at < text.size(); --left) {
    ++at;
    while (at < text.size() && !BeginsCharacter(text[at])) ++at;
  }
  text.erase(0, at);
  return text;
}

// The text of the trace that made the node.
std::string TextOf(const CTraceEvent& node) {
  if (node.event) return node.event->GetText();
  const auto& block = static_cast<const CExecutionBlock&>(node);
  return block.kept ? block.kept->own : std::string();
}

std::string TextOfBlock(const CExecutionBlock& block) {
  if (!block.children.empty()) return BehindSevenCharacters(TextOf(*block.children[0]));
  return block.kept ? block.kept->label : std::string();
}

CExecutionBlock::KeptTexts& KeptBy(CExecutionBlock& block) {
  if (!block.kept) block.kept = std::make_unique<CExecutionBlock::KeptTexts>();
  return *block.kept;
}

}  // namespace

std::string ProcLabels::Of(const CTraceEvent& node) const {
  if (node.Kind() == NodeKind::Leaf) return _UTF2MBS(TextOf(node));
  const auto& block = static_cast<const CExecutionBlock&>(node);
  switch (node.Kind()) {
    case NodeKind::Machine:
    case NodeKind::Application:
      return _UTF2MBS(NameOf(m_names, block.id));
    case NodeKind::Process:
      return "PID " + _UTF2MBS(NameOf(m_names, block.id)) + " - " + Span(block);
    case NodeKind::Thread:
      return "TID " + _UTF2MBS(NameOf(m_names, block.id)) + " - " + Span(block);
    case NodeKind::Block:
      return TextOfBlock(block) + " - " + Span(block);
    default:
      return {};
  }
}

void ProcLabels::Set(CTraceEvent& node) {
  if (node.treeItem) m_items->OnLabelChanged(node);
}

void ProcLabels::SetLater(CExecutionBlock& node) {
  if (!node.treeItem || node.waiting) return;
  node.waiting = true;
  m_waiting.push_back(&node);
}

void ProcLabels::SetWaiting() {
  for (CExecutionBlock* const node : m_waiting) {
    node->waiting = false;
    Set(*node);
  }
  m_waiting.clear();
}

void ProcLabels::SetLevels(CRoot& root) {
  if (m_names.size() == m_namesSeen) return;
  m_namesSeen = m_names.size();
  std::vector<CExecutionBlock*> nodes;
  const auto takeShown = [&nodes](const CExecutionBlock& above) {
    for (std::size_t i = 0; i < above.children.size(); ++i) {
      if (above.children[i]->treeItem) nodes.push_back(above.children.BlockAt(i));
    }
  };
  for (takeShown(root); !nodes.empty();) {
    CExecutionBlock* const node = nodes.back();
    nodes.pop_back();
    Set(*node);
    if (node->Kind() != NodeKind::Thread) takeShown(*node);
  }
}

void ProcLabels::Forget(CExecutionBlock& node) {
  if (node.waiting) m_waiting.erase(std::find(m_waiting.begin(), m_waiting.end(), &node));
}

void ProcLabels::KeepLabel(CExecutionBlock& block) {
  if (block.Kind() == NodeKind::Block) KeptBy(block).label = TextOfBlock(block);
}

void ProcLabels::KeepText(CExecutionBlock& block) {
  if (block.Kind() == NodeKind::Block) KeptBy(block).own = TextOf(block);
}
