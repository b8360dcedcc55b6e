// The property sheet of an application on the screen, on a machine without a process.
#pragma once

#include <memory>
#include <string>

#include "sheet_window.h"
#include "support/fake_config_client.h"

class ConfigSheetFaceTest : public SheetWindowTest {
 protected:
  ConfigSheetFaceTest() {
    m_doc = std::make_unique<CConfigDoc>(m_host, ClientOf(m_machine));
    m_doc->ConnectToMachine("web");
    m_machine.Run("orders", {"Net/Open", "Net/Close", "Disk/Read"});
    m_app = m_doc->AddApplication("orders");
  }
  int Run(const Act& act) { return SheetWindowTest::Run(*m_doc, *m_app, act); }

  FakeMachine m_machine;
  std::unique_ptr<CConfigDoc> m_doc;
  trace_App_i* m_app = nullptr;
};
