// Which combinations of choices pass: a yes or no for each way to take one choice of every branch.
//
// Shape    A node asks for the choice of its branch and leads to a node of a later branch, kFails
//          or kPasses. Equal functions are the same node, so a function that is a product of sets,
//          one per branch, is seen at once: behind each node there is one way that passes.
// Owner    The diagram owns its nodes, which stay.
// Errors   kTooLarge once kChoicesMax is exceeded; every operation on it gives it again.
// Threads  One.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

class ChoiceDiagram {
 public:
  using Node = std::uint32_t;
  static constexpr Node kFails = 0, kPasses = 1, kTooLarge = ~Node{0};
  static constexpr std::size_t kChoicesMax = 1'000'000;  // looked at, of all nodes together

  // `choices`: how many each branch has.
  explicit ChoiceDiagram(std::vector<std::size_t> choices);

  // Passes where the choice of this branch does.
  Node Test(std::size_t branch, const std::vector<bool>& passes);
  Node And(Node a, Node b) { return Joined(a, b, kFails); }
  Node Or(Node a, Node b) { return Joined(a, b, kPasses); }

  // Of each branch the choices that can pass; nothing if they do not pass whatever is chosen in
  // the others. REQUIRES: not kTooLarge.
  std::optional<std::vector<std::vector<bool>>> Product(Node node) const;

 private:
  struct Entry {
    std::size_t branch;
    std::vector<Node> next;  // by choice
  };
  Node Make(std::size_t branch, std::vector<Node> next);
  // `decides` is the end that decides whatever the other one is.
  Node Joined(Node a, Node b, Node decides);
  Node Next(Node node, std::size_t branch, std::size_t choice) const {
    return m_nodes[node].branch == branch ? m_nodes[node].next[choice] : node;
  }

  const std::vector<std::size_t> m_choices;
  std::vector<Entry> m_nodes;
  std::map<std::pair<std::size_t, std::vector<Node>>, Node> m_known;
  std::map<std::tuple<Node, Node, Node>, Node> m_joined;
  std::size_t m_size = 0;
};
