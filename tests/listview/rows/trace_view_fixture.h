// A document with a list view over a fake list, and a main window that records its messages.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "settings/registry.h"
#include "support/fake_row_list.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/view_probes.h"

inline ListOrder ListOrderOf(const ColumnOrder& order) {
  return ListOrder(order.begin(), order.end());
}

class TraceViewTest : public testing::Test {
 protected:
  TraceViewTest() {
    SetSettingsFile(m_directory.File("settings.ini"));
    g_activeColumns = kDefaultActiveColumns;
    g_useUtc = true;
    m_document.m_loading = false;
    m_view = MakeView();
    m_list = static_cast<FakeRowList*>(&m_view->List());
  }
  ~TraceViewTest() override {
    g_activeColumns = kDefaultActiveColumns;
    g_useUtc = false;
    SetSettingsFile("");
  }

  std::unique_ptr<CTraceView> MakeView() {
    return std::make_unique<CTraceView>(
        m_document, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
  }
  // Adds a trace to the document; no view is notified.
  TraceEvent_i* Add(TraceFields fields) {
    if (!fields.count) fields.count = m_nextCount;
    m_nextCount = *fields.count + 1;
    TraceEvent_i* event = MakeEvent(fields).release();
    m_document.AddTrace(event);
    return event;
  }
  // Traces with these numbers.
  void AddNumbers(const std::vector<std::uint32_t>& numbers) {
    for (const std::uint32_t number : numbers) Add({.count = number});
  }
  void AddMany(int count) {
    for (int i = 0; i < count; ++i) Add({});
  }
  // Acts like a drain: adds traces to the document and notifies the views once.
  void Drain(const std::vector<TraceFields>& traces) {
    CTraceHint hint;
    for (const TraceFields& fields : traces) hint.m_events.push_back(Add(fields));
    m_document.UpdateAllViews(nullptr, kHintAdded, &hint);
  }
  void DrainMany(int count) { Drain(std::vector<TraceFields>(static_cast<std::size_t>(count))); }
  // Acts like a trim: notifies the views, then removes the oldest traces.
  void Trim(int count) {
    CTraceHint hint;
    for (int i = 0; i < count; ++i)
      hint.m_events.push_back(m_document.m_traces[static_cast<std::size_t>(i)]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &hint);
    for (int i = 0; i < count; ++i) m_document.m_traces.PopFront();
  }
  void Open() { m_view->OnInitialUpdate(); }
  void Focus(int row) {
    m_list->SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }
  void FollowTo(TraceEvent_i* target, CView* sender = nullptr) {
    CTraceHint hint(target);
    m_view->OnUpdate(sender, kHintFollow, &hint);
  }
  // Hides the traces of component 9.
  void HideNine() {
    CTraceFilter filter;
    filter.allTraces = filter.allComponents = 0;
    filter.components[9] = 0;
    m_view->SetFilter(filter, true);
  }
  // The numbers of the rows, as the list asks for them: "1 2 3".
  std::string Rows() {
    std::string rows;
    for (int row = 0; row < m_list->ItemCount(); ++row)
      rows += (row ? " " : "") + m_view->RowListText(row, Column::Count);
    return rows;
  }
  // "2 focused selected 4 selected": the rows with a state.
  std::string States() {
    std::string states;
    for (int row = 0; row < m_list->ItemCount(); ++row) {
      const unsigned state = m_list->GetItemState(row);
      if (!state) continue;
      states += (states.empty() ? "" : " ") + std::to_string(row);
      if (state & kRowFocused) states += " focused";
      if (state & kRowSelected) states += " selected";
    }
    return states;
  }

  TempDir m_directory;
  RecordingHost m_host;
  PaneProbe m_main{m_host};
  CTraceDoc m_document{m_host};
  std::unique_ptr<CTraceView> m_view;
  FakeRowList* m_list = nullptr;
  std::uint32_t m_nextCount = 1;
};
