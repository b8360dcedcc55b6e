// A pane that shows a document with a filter, and a document that lends its traces to threads.
#pragma once

#include "listview/details/trace_iterator.h"
#include "panes/trace_pane.h"

class CountedPane final : public TracePane {
 public:
  using TracePane::TracePane;
  ViewControl* Control() override { return nullptr; }
  TraceEvent_i* CurrentEvent() const override { return nullptr; }

 private:
  int TraceCount() const override { return 0; }
  bool ShowsAny() const override { return true; }
  void RepaintHits() override {}
  bool Rebuild() override { return true; }
  void OnReady() override {}
  void AddTraces(const CTraceHint&) override {}
  void RemoveTraces(const CTraceHint&) override {}
  void FollowTrace(CView*, const TraceEvent_i&) override {}
  std::unique_ptr<CTraceIterator> MakeIterator() override { return nullptr; }
  void Find(bool) override {}
  void OnExport() override {}
};

// As that of a file does.
class LendingDoc final : public CTraceDoc {
 public:
  using CTraceDoc::CTraceDoc;

 private:
  std::shared_ptr<const MappedFile> FileOfTraces() const override {
    return MappedFile::Open("/proc/self/exe");
  }
};
