// An application on a machine without a process, in a configuration document, for tests of its
// property sheet.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "config/pages/config_sheet.h"
#include "support/fake_machine.h"
#include "support/recording_host.h"

class ConfigSheetFixture : public testing::Test {
 protected:
  ConfigSheetFixture() {
    ConfigClient client;
    client.connect = [this](const std::string& host, std::string* why) {
      return m_machine.Connect(host, why);
    };
    client.open = [this](const std::string&, const std::string& app) {
      return m_machine.Open(app, nullptr);
    };
    m_doc = std::make_unique<CConfigDoc>(m_host, std::move(client));
    m_doc->ConnectToMachine("web");
    m_machine.Run("orders", {"Net/Open", "Net/Close", "Disk/Read"});
    m_app = m_doc->AddApplication("orders");
    m_doc->SetModifiedFlag(false);
    m_machine.m_log.clear();
    m_host.ClearTranscript();
  }
  // What was asked of the machine since the last look.
  std::string Asked() { return std::exchange(m_machine.m_log, ""); }
  // The boxes since the last look, without the wait cursor's lines.
  std::string Boxes() {
    std::string boxes;
    std::istringstream lines(m_host.Reported());
    m_host.ClearTranscript();
    for (std::string line; std::getline(lines, line);)
      if (line.find("wait cursor") == line.npos) boxes += line + "\n";
    return boxes;
  }
  static std::string Refusal(const std::string& text) {
    return "box Tessera [none] \"" + text + "\" (OK) -> OK\n";
  }
  FakeMachine::App& Orders() { return m_machine.m_apps["orders"]; }
  std::string SinkInForce() {
    const FakeMachine::App& app = Orders();
    return (app.sinkType == trc_SinkFile ? "file " : "server ") + app.sinkName + " " +
           app.sinkOptions;
  }

  RecordingHost m_host;
  FakeMachine m_machine;
  std::unique_ptr<CConfigDoc> m_doc;
  trace_App_i* m_app = nullptr;
};
