// A document with a tree view over a fake control, and a main window that records its messages.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "docview/commands/command_ids.h"
#include "support/desk_traces.h"
#include "support/fake_tree_control.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/view_probes.h"
#include "tree/proc/proc_view.h"

class ProcViewTest : public testing::Test {
 protected:
  ProcViewTest() {
    NameDesk(m_document);
    m_view = MakeView();
    m_tree = static_cast<FakeTreeControl*>(&m_view->Tree());
  }

  std::unique_ptr<CProcView> MakeView() {
    return std::make_unique<CProcView>(m_document, [](TreeControlOwner& owner) {
      return std::make_unique<FakeTreeControl>(owner);
    });
  }
  // All tic counts are 0, so that every span is "0 ps".
  TraceEvent_i* Add(const TraceFields& fields) {
    return AddDeskTrace(m_document, fields, m_number);
  }
  TraceEvent_i* Add(const char* text) { return Add(TraceFields{.text = text}); }
  // Traces "1", "2" ...
  void AddMany(int count) {
    for (int i = 0; i < count; ++i) Add(std::to_string(m_number).c_str());
  }
  // Acts like a drain: adds traces to the document and notifies the views once.
  void Drain(const std::vector<TraceFields>& traces) {
    CTraceHint hint;
    for (const TraceFields& fields : traces) hint.m_events.push_back(Add(fields));
    m_document.UpdateAllViews(nullptr, kHintAdded, &hint);
  }
  void Drain(const char* text) { Drain({TraceFields{.text = text}}); }
  // Acts like a trim: notifies the views, then removes the oldest traces.
  void Trim(std::size_t count) {
    CTraceHint hint;
    for (std::size_t i = 0; i < count; ++i) hint.m_events.push_back(m_document.m_traces[i]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &hint);
    for (std::size_t i = 0; i < count; ++i) m_document.m_traces.PopFront();
  }
  void Clear() { m_document.DeleteContents(); }
  void Open() {
    m_view->OnInitialUpdate();
    m_tree->calls.clear();
    m_host.ClearTranscript();
  }
  void FollowTo(TraceEvent_i* target) {
    CTraceHint hint(target);
    m_view->OnUpdate(nullptr, kHintFollow, &hint);
  }
  void Expand(const std::string& text) {
    const TreeItem item = m_tree->Find(text);
    ASSERT_TRUE(item) << text << " in\n" << m_tree->Picture();
    m_tree->Expand(item, true);
  }
  // Opens the path to the first thread.
  void ExpandToThread() {
    for (const char* text : {"desk", "shop", kProcess, kThread}) Expand(text);
  }
  void Select(const std::string& text) {
    const TreeItem item = m_tree->Find(text);
    ASSERT_TRUE(item) << text;
    m_tree->SelectItem(item);
    m_tree->calls.clear();
  }
  std::string Selected() { return m_tree->TextOf(m_tree->SelectedItem()); }
  // Hides traces of category 9.
  void HideNine(CTraceFilter& filter) {
    filter.allTraces = filter.allCategories = 0;
    filter.categories[9] = 0;
  }
  CCmdUI State(unsigned id, bool enabled = true) {
    CCmdUI ui(id, enabled, false);
    m_view->OnUpdateCommand(ui);
    return ui;
  }

  static constexpr const char* kProcess = "PID 100 - 0 ps";
  static constexpr const char* kThread = "TID one - 0 ps";
  TempDir m_directory;
  RecordingHost m_host;
  PaneProbe m_main{m_host};
  CTraceDoc m_document{m_host};
  std::unique_ptr<CProcView> m_view;
  FakeTreeControl* m_tree = nullptr;
  std::uint32_t m_number = 1;
};
