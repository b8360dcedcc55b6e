#include "commands/tree_json.h"

#include <vector>

#include "base/json_text.h"

namespace {

// A node whose children are being written.
struct OpenNode {
  const ChildList* children;
  std::size_t next;
  std::uint64_t id;
};

constexpr std::uint64_t kNoParent = ~std::uint64_t{0};

const ChildList* ChildrenOf(const CTraceEvent& node) {
  if (node.Kind() == NodeKind::Leaf) return nullptr;
  const ChildList& children = static_cast<const CExecutionBlock&>(node).children;
  return children.empty() ? nullptr : &children;
}

std::string_view WordOf(NodeKind kind) {
  constexpr std::string_view kWords[] = {"trace",   "block",       "thread",
                                         "process", "application", "machine"};
  return kWords[static_cast<std::size_t>(kind)];
}

// Of picoseconds, with a fraction where there is one.
void AppendNanoseconds(std::string& json, std::int64_t tics) {
  if (tics < 0) json.push_back('-');
  const std::uint64_t all =
      tics < 0 ? ~static_cast<std::uint64_t>(tics) + 1 : static_cast<std::uint64_t>(tics);
  AppendNumber(json, all / 1000);
  const auto rest = static_cast<unsigned>(all % 1000);
  if (rest == 0) return;
  json.push_back('.');
  for (const unsigned digit : {rest / 100, rest / 10 % 10, rest % 10})
    json.push_back(static_cast<char>('0' + digit));
}

}  // namespace

std::string TreeJson::NameOfNode(const CTraceEvent& node) const {
  if (node.Kind() == NodeKind::Leaf) return node.event->GetText();
  const auto& block = static_cast<const CExecutionBlock&>(node);
  if (node.Kind() != NodeKind::Block) return NameOf(m_names, block.id);
  // The label is the text and the time.
  std::string label = m_model.NodeLabel(node);
  const std::size_t time = label.rfind(" - ");
  if (time != std::string::npos) label.resize(time);
  return label;
}

void TreeJson::Append(const CTraceEvent& node, std::uint64_t parent, int depth) {
  std::string& json = m_output.Buffer();
  json.append("{\"id\":");
  AppendNumber(json, m_nodes++);
  json.append(",\"parent\":");
  if (parent == kNoParent)
    json.append("null");
  else
    AppendNumber(json, parent);
  json.append(",\"depth\":");
  AppendNumber(json, depth);
  json.append(",\"kind\":\"").append(WordOf(node.Kind())).append("\",\"name\":");
  AppendJsonText(json, NameOfNode(node));
  const NodeKind kind = node.Kind();
  if (kind == NodeKind::Process || kind == NodeKind::Thread || kind == NodeKind::Block) {
    json.append(",\"durationNs\":");
    AppendNanoseconds(json, static_cast<const CExecutionBlock&>(node).duration);
  } else if (kind == NodeKind::Leaf) {
    const std::uint64_t place = m_places.at(node.event);
    json.append(",\"i\":");
    AppendNumber(json, place);
    json.append(",\"time\":\"");
    if (m_moments.Append(json, place, *node.event)) {
      json.push_back('"');
    } else {
      json.pop_back();
      json.append("null");
    }
  }
  json.push_back('}');
}

// A loop, because blocks may nest 100,000 deep.
bool TreeJson::Write(const CTraceEvent& machine, int levels) {
  std::vector<OpenNode> path;
  const CTraceEvent* node = &machine;
  for (;;) {
    const int depth = static_cast<int>(path.size());
    const std::uint64_t id = m_nodes;
    Append(*node, path.empty() ? kNoParent : path.back().id, depth);
    if (!m_output.EndLine()) return false;
    const ChildList* const children = ChildrenOf(*node);
    if (children && depth < levels) path.push_back({children, 0, id});
    while (!path.empty() && path.back().next == path.back().children->size()) path.pop_back();
    if (path.empty()) return true;
    node = (*path.back().children)[path.back().next++];
  }
}
