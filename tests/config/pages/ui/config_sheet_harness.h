// The property sheet of an application on the screen, on a machine without a process.
#pragma once

#include <memory>
#include <string>

#include "sheet_window.h"
#include "support/fake_machine.h"

class ConfigSheetFaceTest : public SheetWindowTest {
 protected:
  ConfigSheetFaceTest() {
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
  }
  int Run(const Act& act) { return SheetWindowTest::Run(*m_doc, *m_app, act); }

  FakeMachine m_machine;
  std::unique_ptr<CConfigDoc> m_doc;
  trace_App_i* m_app = nullptr;
};
