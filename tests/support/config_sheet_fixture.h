// An application on a machine without a process, in a configuration document, for tests of its
// property sheet.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "config/pages/config_sheet.h"
#include "support/fake_config_client.h"
#include "support/recording_host.h"

class ConfigSheetFixture : public testing::Test {
 protected:
  ConfigSheetFixture() {
    m_doc = std::make_unique<CConfigDoc>(m_host, ClientOf(m_machine));
    m_doc->ConnectToMachine("web");
    m_machine.Run("orders", {"Net/Open", "Net/Close", "Disk/Read"});
    m_app = m_doc->AddApplication("orders");
    m_doc->SetModifiedFlag(false);
    m_machine.m_log.clear();
    m_host.ClearTranscript();
  }
  // What was asked of the machine since the last look.
  std::string Asked() { return std::exchange(m_machine.m_log, ""); }
  std::string Boxes() { return m_host.TakeBoxes(); }
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
