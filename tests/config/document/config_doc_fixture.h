// A configuration document on a machine without a process.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "config/document/config_doc.h"
#include "docview/view.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "support/fake_config_client.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

// Counts the hints.
class HintedView final : public CView {
 public:
  using CView::CView;
  void OnUpdate(CView*, unsigned hint, CObject* object) override {
    if (hint == 1002 && !object) ++m_hints;
  }
  ViewControl* Control() override { return nullptr; }
  int m_hints = 0;
};

// Something may happen while a box is up.
class BoxHost final : public RecordingHost {
 public:
  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    if (m_duringBox) m_duringBox();
    return RecordingHost::MessageBox(request);
  }
  std::function<void()> m_duringBox;
};

class ConfigDocTest : public testing::Test {
 protected:
  ConfigDocTest() { SetSettingsFile(m_folder.File("settings.ini")); }
  ~ConfigDocTest() override {
    SetSettingsFile("");
    g_quickClose = false;
    g_bWizardLocalConfig = false;
  }
  std::unique_ptr<CConfigDoc> Document() {
    ConfigClient client = ClientOf(m_machine);
    client.open = [this](const std::string& host, const std::string& app) {
      m_machine.m_log += "on " + host + " ";
      return m_machine.Open(app, nullptr);
    };
    return std::make_unique<CConfigDoc>(m_host, std::move(client));
  }
  std::unique_ptr<CConfigDoc> Connected() {
    std::unique_ptr<CConfigDoc> doc = Document();
    EXPECT_TRUE(doc->ConnectToMachine("web"));
    return doc;
  }
  // Opens a file with these lines after the header.
  bool Open(CConfigDoc& doc, const std::string& lines) {
    return doc.OnOpenDocument(m_folder.File("a.tcf", "TCF Version 3.2\n" + lines));
  }
  static std::string Names(const CConfigDoc& doc) {
    std::string names;
    for (const QuorPtr<trace_App_i>& app : doc.GetApplications()->m_apps)
      names += app->GetAppName() + " ";
    return names;
  }
  std::string Boxes() { return m_host.TakeBoxes(); }
  // Boxes, dialogs and wait cursors, in their order.
  std::string Shown() {
    std::string shown = m_host.Reported();
    m_host.ClearTranscript();
    return shown;
  }
  static std::string Question(const std::string& app, const std::string& answer) {
    return "box Tessera [question] \"Some traces are still active in " + app +
           ".  Do you want to turn them off?\" (Yes, No, Cancel) -> " + answer + "\n";
  }
  static std::string Error(const std::string& text) {
    return "box Tessera [none] \"" + text + "\" (OK) -> OK\n";
  }

  FakeMachine m_machine;
  BoxHost m_host;
  TempDir m_folder;
};

inline constexpr char kWaited[] = "wait cursor on\nwait cursor off\n";
inline constexpr char kNoConnection[] = "Error trying to connect to configuration server.";
