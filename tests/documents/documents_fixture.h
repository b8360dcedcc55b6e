// An application with a template of trace file documents. Its main frame writes progress messages
// to the host's transcript.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/file_gate.h"
#include "documents/load_progress.h"
#include "documents/trace_file_doc.h"
#include "docview/commands/command_ids.h"
#include "docview/doc_template.h"
#include "settings/globals.h"
#include "support/fake_frame.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

class DocumentsTest : public testing::Test {
 protected:
  DocumentsTest() : m_app(m_host, m_log) {
    CMultiDocTemplate::Makers makers;
    makers.document = [this] { return std::make_unique<CTraceFileDoc>(m_host, m_loads); };
    makers.frame = [this] { return std::make_unique<CMDIChildWnd>(m_app.m_frame); };
    makers.view = [this](CDocument& document) {
      return std::make_unique<ProbeView>(document, m_log);
    };
    m_template = m_app.AddDocTemplate(std::make_unique<CMultiDocTemplate>(
        129, "\n\nTrace File\nTrace Files (*.trc)\n.trc\nTraceFile\nTrace File", m_app.MainFrame(),
        std::move(makers)));
    m_app.m_frame.m_onMessage = [this](unsigned message, std::uintptr_t what, std::intptr_t value) {
      if (message == WM_TRACE_PROGRESS) OnProgress(what, value);
      return message == WM_TRACE_PROGRESS;
    };
  }
  ~DocumentsTest() override { g_quickClose = false; }

  CTraceFileDoc* Open(const std::string& path) {
    return static_cast<CTraceFileDoc*>(m_app.OpenDocumentFile(path));
  }
  bool FinishLoad(const CTraceFileDoc& document) {
    return m_host.RunUntil([&document] { return !document.m_loading; });
  }
  // Writes the image, opens it and waits for its traces.
  CTraceFileDoc& Load(const TrcImage& image, const std::string& name = "web.trc") {
    CTraceFileDoc* const document = Open(image.WriteTo(m_temp.File(name)));
    EXPECT_NE(document, nullptr);
    EXPECT_TRUE(FinishLoad(*document));
    return *document;
  }
  // A load keeps its file open until its thread has ended; only then the file can be made again.
  bool ThreadReleases(const std::string& path) {
    return m_host.RunUntil([&path] { return static_cast<bool>(CreateForWriting(path)); });
  }
  void OnProgress(std::uintptr_t what, std::intptr_t value) {
    if (what == kLoadStart) {
      const auto start = TakeLoadStart(value);
      m_cancelEvents.push_back(start->cancelEvent);
      m_host.Note("start " + start->caption + " " +
                  std::filesystem::path(start->path).filename().string() + " " +
                  std::to_string(start->size));
    } else if (what == kLoadPosition) {
      m_host.Note("position " + std::to_string(value));
    } else {
      m_host.Note("done");
    }
    if (m_onProgress) m_onProgress(what);
  }
  // The lines of the host's transcript that begin with `line`.
  std::string ReportedLines(const std::string& line) const {
    std::string all;
    for (const std::string& each : m_host.Transcript()) {
      if (each.rfind(line, 0) == 0) all += each + "\n";
    }
    return all;
  }
  static std::string Texts(const CTraceDoc& document) {
    std::string texts;
    for (std::size_t i = 0; i < document.m_traces.size(); ++i) {
      texts += document.m_traces[i]->GetText() + " ";
    }
    return texts;
  }
  static bool IsEnabled(CCmdTarget& target, unsigned id) {
    CCmdUI ui(id, false, false);
    UpdateCommand(target, ui);
    return ui.IsEnabled();
  }
  static bool IsChecked(CCmdTarget& target, unsigned id) {
    CCmdUI ui(id, false, false);
    UpdateCommand(target, ui);
    return ui.IsChecked();
  }

  TempDir m_temp;
  TraceLoadSetup m_loads;  // of the documents opened from now on
  RecordingHost m_host;
  FrameLog m_log;
  std::vector<HANDLE> m_cancelEvents;  // of the start messages
  std::function<void(std::uintptr_t)> m_onProgress;
  CMultiDocTemplate* m_template = nullptr;
  FakeApp m_app;
};
