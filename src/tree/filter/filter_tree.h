// The tree of the filter dialog: labelled nodes with three-state boxes.
//
// Shape    The state of a node is in the form of the tree control: the number of one of four state
//          images, 16 by 16 pixels, shifted by 12 bits. Image 0 is blank and not used.
// Owner    The tree owns its nodes, which never move; a node borrows its mark.
// Errors   None.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

enum class FilterState : unsigned {
  Unchecked = 1u << 12,  // an empty box
  Checked = 2u << 12,    // a box with a cross
  Partial = 3u << 12,    // a grey box with a cross: some of the nodes below are checked
};

class FilterNode {
 public:
  FilterNode(std::string label, int& mark, FilterNode* parent)
      : m_label(std::move(label)),
        m_mark(mark),
        m_state(mark != 0 ? FilterState::Checked : FilterState::Unchecked),
        m_parent(parent) {}
  FilterNode(const FilterNode&) = delete;
  FilterNode& operator=(const FilterNode&) = delete;

  const std::string& Label() const { return m_label; }  // UTF-8; other bytes pass unchanged
  FilterState State() const { return m_state; }
  FilterNode* Parent() const { return m_parent; }  // null: the root
  std::size_t ChildCount() const { return m_children.size(); }
  FilterNode& Child(std::size_t place) const { return *m_children[place]; }
  std::size_t Place() const { return m_place; }  // among the parent's children

  // Appends a child. It is checked at first if its mark is not 0.
  FilterNode& Insert(std::string label, int& mark);
  // Sorts the direct children by their labels, ignoring the case of A to Z; equal ones by their
  // bytes.
  void SortChildren();

 private:
  friend class FilterTree;
  FilterState Refresh();
  void SetBelow(FilterState state);
  void WriteMarks() const;
  void AddMarks(std::vector<int>& marks) const;
  const int* SetMarks(const int* marks) const;

  const std::string m_label;
  int& m_mark;
  FilterState m_state;
  FilterNode* const m_parent;
  std::size_t m_place = 0;
  std::vector<std::unique_ptr<FilterNode>> m_children;
};

class FilterTree {
 public:
  FilterTree(std::string label, int& mark) : m_root(std::move(label), mark, nullptr) {}
  FilterNode& Root() { return m_root; }
  const FilterNode& Root() const { return m_root; }

  // The state pass: parents take their states from their children. Kept: it does not descend below
  // a checked node, whose children stay as they are.
  void Refresh() { m_root.Refresh(); }
  // A click on the node's box: unchecked and partial become checked, checked becomes unchecked,
  // with all below; the parents follow.
  void Toggle(FilterNode& node);
  // Writes 1 to the marks of checked nodes, 0 to all others.
  void WriteMarks() const { m_root.WriteMarks(); }
  // The marks as they are, in the order of the nodes, and back.
  std::vector<int> Marks() const;
  void SetMarks(const std::vector<int>& marks) const { m_root.SetMarks(marks.data()); }

 private:
  FilterNode m_root;
};
