// The window of an application's property sheet without a screen.
#pragma once

#include <vector>

#include "config/pages/config_sheet.h"
#include "support/fake_property_sheet.h"
#include "support/fake_traces_controls.h"

struct FakeConfigSheet : FakePropertySheet {
  using Sink = CAppSinkCfgPropertyPage;

  explicit FakeConfigSheet(CConfigPropertySheet& sheet)
      : FakePropertySheet(sheet), traces(sheet.TracesPage().Traces()) {
    sheet.OnInitDialog();
    AddPage(600);
    FakePropertyPage& window = AddPage(400);
    Sink& sink = sheet.SinkPage();
    window.Bind(Sink::kMachine, sink.m_strMachine);
    window.Bind(Sink::kFileName, sink.m_strFileName);
    window.Bind(Sink::kHistoricFiles, sink.m_strHistoricFiles);
    window.Bind(Sink::kMaxSize, sink.m_strMaxSize);
    Open();
  }
  FakeTracesControls traces;
};
