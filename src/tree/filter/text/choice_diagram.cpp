#include "tree/filter/text/choice_diagram.h"

#include <algorithm>

ChoiceDiagram::ChoiceDiagram(std::vector<std::size_t> choices) : m_choices(std::move(choices)) {
  // The two ends stand behind all branches.
  m_nodes.push_back({m_choices.size(), {}});
  m_nodes.push_back({m_choices.size(), {}});
}

ChoiceDiagram::Node ChoiceDiagram::Test(std::size_t branch, const std::vector<bool>& passes) {
  std::vector<Node> next;
  for (const bool one : passes) next.push_back(one ? kPasses : kFails);
  return Make(branch, std::move(next));
}

ChoiceDiagram::Node ChoiceDiagram::Make(std::size_t branch, std::vector<Node> next) {
  const Node first = next.front();
  if (std::ranges::all_of(next, [&](Node node) { return node == first; })) return first;
  if (std::ranges::find(next, kTooLarge) != next.end()) return kTooLarge;
  const auto [at, isNew] = m_known.try_emplace({branch, next}, static_cast<Node>(m_nodes.size()));
  if (!isNew) return at->second;
  m_size += next.size();
  m_nodes.push_back({branch, std::move(next)});
  return at->second;
}

ChoiceDiagram::Node ChoiceDiagram::Joined(Node a, Node b, Node decides) {
  if (a == kTooLarge || b == kTooLarge || m_size > kChoicesMax) return kTooLarge;
  if (a == decides || b == decides) return decides;
  if (a <= kPasses || a == b) return b;
  if (b <= kPasses) return a;
  if (a > b) std::swap(a, b);
  const std::tuple key(a, b, decides);
  if (const auto known = m_joined.find(key); known != m_joined.end()) return known->second;
  const std::size_t branch = std::min(m_nodes[a].branch, m_nodes[b].branch);
  std::vector<Node> next;
  m_size += m_choices[branch];
  for (std::size_t choice = 0; choice < m_choices[branch]; ++choice)
    next.push_back(Joined(Next(a, branch, choice), Next(b, branch, choice), decides));
  const Node made = Make(branch, std::move(next));
  m_joined.emplace(key, made);
  return made;
}

std::optional<std::vector<std::vector<bool>>> ChoiceDiagram::Product(Node node) const {
  std::vector<std::vector<bool>> passing;
  for (std::size_t branch = 0; branch < m_choices.size(); ++branch) {
    std::vector<bool>& choices = passing.emplace_back(m_choices[branch], node != kFails);
    if (m_nodes[node].branch != branch) continue;
    const std::vector<Node>& next = m_nodes[node].next;
    Node way = kFails;
    for (std::size_t choice = 0; choice < next.size(); ++choice) {
      choices[choice] = next[choice] != kFails;
      if (!choices[choice]) continue;
      if (way != kFails && next[choice] != way) return std::nullopt;
      way = next[choice];
    }
    node = way;
  }
  return passing;
}
