// A monitor's document with a fake connection, in a working directory of its own.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "documents/trace_realtime_doc.h"
#include "documents_fixture.h"
#include "support/fake_connection.h"

class RealtimeTest : public DocumentsTest {
 protected:
  RealtimeTest() : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(m_temp.Path());
    g_traceLimit = 500000;
  }
  ~RealtimeTest() override {
    m_view.reset();
    m_document.reset();
    std::filesystem::current_path(m_before);
    g_traceLimit = 500000;
  }
  // A view that logs "view hint 1004 with object", and the hints' traces by number.
  void Connect(const std::string& machine = "web") {
    m_document = std::make_unique<CTraceRealtimeDoc>(m_host, m_service.Connector());
    m_view = std::make_unique<ProbeView>(*m_document, m_log);
    ASSERT_TRUE(m_document->ConnectToMachine(machine));
    m_host.ClearTranscript();
    m_log.Clear();
  }
  void DrainOf(int traces) {
    m_service.Last().SendMany(traces);
    m_document->Drain();
  }
  // "Count" of the hint's traces: "1..100", "" for none.
  static std::string Numbers(const CObject* object) {
    const auto* hint = dynamic_cast<const CTraceHint*>(object);
    if (!hint || hint->m_events.empty()) return "";
    const auto number = [](const TraceEvent_i* event) {
      return std::to_string(event->GetSequenceNumber());
    };
    return number(hint->m_events.front()) + ".." + number(hint->m_events.back());
  }
  // Logs each hint with its traces, as "1005 1..100 of 2500" with the size of the list.
  void LogHints() {
    m_view->m_onUpdate = [this](CView* sender, unsigned hint, CObject* object) {
      EXPECT_EQ(sender, nullptr);
      m_hints.push_back(std::to_string(hint) + " " + Numbers(object) + " of " +
                        std::to_string(m_document->m_traces.size()));
    };
  }
  std::string StartCapture(const std::string& name) {
    const std::string path = m_temp.File(name);
    m_host.AnswerFileDialog(path);
    EXPECT_TRUE(m_document->ToggleCapture());
    EXPECT_TRUE(m_document->IsCapturing());
    return path;
  }
  std::size_t Size() const { return m_document->m_traces.size(); }

  const std::filesystem::path m_before;
  FakeService m_service;
  std::unique_ptr<CTraceRealtimeDoc> m_document;
  std::unique_ptr<ProbeView> m_view;
  std::vector<std::string> m_hints;
};
