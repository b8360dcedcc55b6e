// The property sheet of one application: its traces, and where they go.
//
// Both pages show what the machine holds when the sheet is made, and apply separately. Cancel
// changes nothing on the machine.
//
// Wait     Making it and applying it ask the machine, each for at most 5 seconds, under a wait
//          cursor. A machine that does not answer is told in a line below the pages.
// Owner    Borrows the document; holds a reference to the application.
// Threads  Interface thread.
#pragma once

#include <string>

#include "config/pages/sink_page.h"
#include "config/pages/traces_page.h"
#include "docview/sheet/property_sheet.h"

class CConfigPropertySheet : public CPropertySheet {
 public:
  CConfigPropertySheet(Host& host, CConfigDoc& document, trace_App_i& app,
                       std::size_t firstPage = 0);

  const char* HelpTopic() const override { return "configuration"; }
  CAppTraceCfgPropertyPage& TracesPage() { return m_traces; }
  CAppSinkCfgPropertyPage& SinkPage() { return m_sink; }
  // Why what is shown is not what the machine holds. Or else why its sink fails, what is kept for
  // later starts, and what the environment of the application has set for its start; empty when
  // there is nothing to say.
  std::string Note() const;

 private:
  std::string GoodNote() const;
  std::string StartNote() const;

  CConfigDoc& m_document;
  const QuorPtr<trace_App_i> m_app;
  bool m_refreshed = false;
  bool m_answered = false;  // when it was refreshed
  CAppTraceCfgPropertyPage m_traces;
  CAppSinkCfgPropertyPage m_sink;
};
