// A list view whose document gets a trace while a file dialog is open, as a monitor's may.
#pragma once

#include "trace_view_fixture.h"

class DrainedView : public RecordingHost {
 public:
  DrainedView() {
    m_document.m_loading = false;
    m_view.OnInitialUpdate();
  }
  // The file that the command writes to `path`.
  std::string Written(unsigned command, const std::string& path) {
    AnswerFileDialog(path);
    EXPECT_TRUE(m_view.OnCommand(command));
    return ReadAll(path);
  }
  std::optional<FileDialogAnswer> RunFileDialog(const FileDialogRequest& request) override {
    CTraceHint hint(MakeEvent({.text = "late", .count = 9}).release());
    m_document.AddTrace(hint.m_events.front());
    m_document.UpdateAllViews(nullptr, kHintAdded, &hint);
    return RecordingHost::RunFileDialog(request);
  }

 private:
  CTraceDoc m_document{*this};
  CTraceView m_view{m_document,
                    [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); }};
};
