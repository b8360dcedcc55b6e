// The filter texts that a window had, walked back and forth. A step that changed the tree of the
// filter dialog as well keeps the tree of its other side.
//
// Shape    The last kFilterStepsMax ones. A new text drops those that were gone back from.
// Threads  One.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tree/filter/trace_filter.h"

constexpr std::size_t kFilterStepsMax = 100;

class FilterSteps {
 public:
  using Tree = std::shared_ptr<const CTraceFilter>;  // its marks; null: it stays as it is
  struct Step {
    std::string text;
    Tree tree;
  };

  // The text in force; at first none: "" is all traces.
  const std::string& Text() const { return m_steps[m_at].text; }
  // `before`: the tree that the step replaces. The same text and tree as before is no step.
  void Go(std::string text, Tree before = nullptr);
  bool CanGoBack() const { return m_at > 0; }
  bool CanGoForward() const { return m_at + 1 < m_steps.size(); }
  // Where a walk leads to. REQUIRES: there is such a step.
  Step Before() const { return {m_steps[m_at - 1].text, m_steps[m_at].tree}; }
  Step Behind() const { return m_steps[m_at + 1]; }
  // `left`: the tree that the walk leaves, if the step has one. False: there is no step, and the
  // text stays.
  bool Back(Tree left = nullptr);
  bool Forward(Tree left = nullptr);

 private:
  // The tree of a step is that of its other side: of the step before while this one or one behind
  // it is in force, else its own.
  std::vector<Step> m_steps{Step()};
  std::size_t m_at = 0;
};
