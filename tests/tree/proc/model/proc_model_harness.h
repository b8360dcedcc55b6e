// A document, a model on it and a control that records, for tests of the procedure tree's model.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "documents/trace_doc.h"
#include "support/desk_traces.h"
#include "support/recording_host.h"
#include "tree/proc/model/proc_model.h"

// Items of a control: a text each, in a hierarchy.
class RememberedItems final : public ProcItems {
 public:
  struct Item {
    TreeItem parent;
    CTraceEvent* node;
    std::string text;
    bool expanded = false;
  };

  TreeItem InsertTreeItem(TreeItem parentItem, CTraceEvent& node) override {
    if (m_refuse) return 0;
    EXPECT_EQ(node.treeItem, 0u) << "an item for a node that has one";
    EXPECT_TRUE(!parentItem || m_items.contains(parentItem));
    node.treeItem = ++m_last;
    m_items[m_last] = {parentItem, &node, m_model->NodeLabel(node), false};
    return m_last;
  }
  bool IsExpanded(TreeItem item) const override { return m_items.at(item).expanded; }
  void OnLabelChanged(CTraceEvent& node) override {
    m_items.at(node.treeItem).text = m_model->NodeLabel(node);
    ++m_labelled;
  }
  void DeleteItem(TreeItem item) override {
    EXPECT_EQ(m_items.erase(item), 1u);
    for (const auto& entry : m_items) EXPECT_NE(entry.second.parent, item) << "an item below it";
  }
  void OnFirstMachine() override { ++m_firstMachines; }

  // Like a user who opens the node: its children get their items.
  void Expand(const CTraceEvent& node) {
    m_items.at(node.treeItem).expanded = true;
    const auto& block = static_cast<const CExecutionBlock&>(node);
    for (std::size_t i = 0; i < block.children.size(); ++i) {
      if (!block.children[i]->treeItem) InsertTreeItem(node.treeItem, *block.children[i]);
    }
  }
  void DeleteAll() { m_items.clear(); }
  std::string TextOf(const CTraceEvent& node) const { return m_items.at(node.treeItem).text; }
  // The texts of all items, by their age.
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const auto& entry : m_items) texts.push_back(entry.second.text);
    return texts;
  }

  const ProcModel* m_model = nullptr;
  std::map<TreeItem, Item> m_items;
  int m_firstMachines = 0, m_labelled = 0;
  bool m_refuse = false;

 private:
  TreeItem m_last = 0;
};

class ProcModelHarness {
 public:
  ProcModelHarness() : m_document(m_host), m_model(m_document, m_filter, &m_items) {
    m_items.m_model = &m_model;
    NameDesk(m_document);
    m_document.m_names[7] = {"till"};
  }
  ~ProcModelHarness() { m_model.Clear(); }

  // Only into the document.
  TraceEvent_i* Trace(const TraceFields& fields) {
    return AddDeskTrace(m_document, fields, m_number);
  }
  // And into the tree.
  TraceEvent_i* Add(const TraceFields& fields, bool live = true) {
    TraceEvent_i* const event = Trace(fields);
    m_item = m_model.AddTrace(event, live);
    return event;
  }
  TraceEvent_i* Add(const char* text) { return Add(TraceFields{.text = text}); }
  void Rebuild() {
    m_items.DeleteAll();
    m_model.Clear();
    m_model.AddAll();
  }
  // Removes the document's oldest traces.
  void Trim(std::size_t traces) {
    std::deque<TraceEvent_i*> oldest;
    for (std::size_t i = 0; i < traces; ++i) oldest.push_back(m_document.m_traces[i]);
    m_model.RemoveTraces(oldest);
    for (std::size_t i = 0; i < traces; ++i) m_document.m_traces.PopFront();
  }
  // Hides traces of category 9.
  void HideCategory9() {
    m_filter.allTraces = m_filter.allCategories = 0;
    m_filter.categories[9] = 0;
  }

  // The node on a path of positions from the root.
  CTraceEvent& Node(std::initializer_list<std::size_t> path) const {
    CTraceEvent* node = const_cast<CRoot*>(&m_model.Root());
    for (const std::size_t position : path) {
      auto& children = static_cast<CExecutionBlock*>(node)->children;
      if (position >= children.size()) throw std::out_of_range("no such child");
      node = children[position];
    }
    return *node;
  }
  CExecutionBlock& Block(std::initializer_list<std::size_t> path) const {
    return dynamic_cast<CExecutionBlock&>(Node(path));
  }
  CProcessThread& Thread() const { return dynamic_cast<CProcessThread&>(Node({0, 0, 0, 0})); }

  // The labels of all nodes below one, two blanks per level.
  std::string Tree(const CExecutionBlock& node, const std::string& indent = "") const {
    std::string text;
    for (std::size_t i = 0; i < node.children.size(); ++i) {
      text += indent + m_model.NodeLabel(*node.children[i]) + "\n";
      if (const CExecutionBlock* const block = node.children.BlockAt(i))
        text += Tree(*block, indent + "  ");
    }
    return text;
  }
  std::string Tree() const { return Tree(m_model.Root()); }
  // Below the first thread.
  std::string InThread() const { return Tree(Thread()); }
  std::string Label(std::initializer_list<std::size_t> path) const {
    return m_model.NodeLabel(Node(path));
  }

  RecordingHost m_host;
  CTraceDoc m_document;
  CTraceFilter m_filter;
  RememberedItems m_items;
  ProcModel m_model;
  TreeItem m_item = 0;  // the result of the last Add

 private:
  std::uint32_t m_number = 1;
};
