// A whole program without windows: real application, main frame, documents and views over fakes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "config/view/config_view.h"
#include "documents/trace_file_doc.h"
#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "support/fake_config_client.h"
#include "support/fake_shell.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "test_app.h"

constexpr char kQuickClose[] =
    "box Application Exit [question] "
    "\"Quick Close (selecting yes will exit without saving any files)?\" (Yes, No, Cancel) -> ";

class ShellTest : public ::testing::Test {
 protected:
  ShellTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    ResetGlobals();
    MakeApp();
  }
  ~ShellTest() override {
    g_quickClose = true;  // no configuration asks about traces that are on
    m_app.reset();
    m_host.RunPosted();
    SetSettingsFile("");
    ResetGlobals();
  }
  void MakeApp() {
    m_app.reset();
    m_app = std::make_unique<TestApp>(m_host, m_faces, m_log);
    m_app->m_configClient = ClientOf(m_machine);
  }
  // Starts a program with no document and no wizard.
  void Start() {
    NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
    ASSERT_TRUE(m_app->InitInstance({}));
    m_log.Clear();
    m_host.ClearTranscript();
  }

  std::string WriteTraces(const std::string& name, int traces) {
    TrcImage image;
    for (int trace = 0; trace < traces; ++trace) image.Trace("up");
    return image.WriteTo(m_dir.File(name));
  }
  // Opens a window on a machine.
  CConfigDoc& OpenConfig(const std::string& machine = "web") {
    EXPECT_TRUE(m_app->OpenConfig(machine));
    return static_cast<CConfigDoc&>(*m_app->ConfigTemplate()->Documents().back());
  }
  // Opens the file and waits for its traces.
  CTraceFileDoc* Open(const std::string& path) {
    auto* document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(path));
    if (!document) return nullptr;
    EXPECT_TRUE(m_host.RunUntil([&] { return !document->m_loading; }));
    m_host.RunPosted();
    return document;
  }
  CMainFrame& Frame() { return *m_app->Frame(); }
  FakeMainFrameFace& Face() { return *m_faces.m_main; }
  CCmdUI State(unsigned id, bool enabled = true, bool checked = false) {
    CCmdUI ui(id, enabled, checked);
    UpdateCommand(Frame(), ui);
    return ui;
  }
  static CTraceView& ListOf(CMDIChildWnd& child) {
    return dynamic_cast<CTraceView&>(*child.GetActiveView());
  }
  static unsigned Stored(const std::string& key, const std::string& name) {
    return NtRegGet(HKEY_CURRENT_USER, key, name, 0U);
  }

  TempDir m_dir;
  FakeMachine m_machine;
  RecordingHost m_host;
  FrameLog m_log;
  FakeShellFaces m_faces{m_log};
  std::unique_ptr<TestApp> m_app;

 private:
  static void ResetGlobals() {
    g_traceLimit = 500000;
    g_useUtc = false;
    g_activeColumns = kDefaultActiveColumns;
    g_quickClose = false;
  }
};
