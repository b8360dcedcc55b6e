// The Traces page of an application's property sheet: all its traces with their settings.
//
// The page shows the traces that the sheet has read when it was opened. Those that the application
// gains meanwhile are neither shown nor changed.
//
// Owner    Borrows document and application.
// Threads  Interface thread.
#pragma once

#include <optional>

#include "config/document/config_doc.h"
#include "config/pages/submit_result.h"
#include "config/traces/traces_list.h"
#include "docview/sheet/property_page.h"

class CAppTraceCfgPropertyPage : public CPropertyPage {
 public:
  static constexpr unsigned kId = 133;
  static constexpr char kLabel[] = "Select the &traces you want to change:";

  explicit CAppTraceCfgPropertyPage(Host& host);

  void OnInitDialog() override { FillList(); }
  // Gives the machine the settings of all rows. The document counts as changed in any case.
  void OnOK() override;
  CTracesList& Traces() { return m_traces; }
  // Of the last OnOK; nothing before the first, and for an application without traces.
  std::optional<SubmitResult> Submitted() const { return m_submitted; }

  // Set before the page is shown.
  CConfigDoc* m_pDoc = nullptr;
  trace_App_i* m_pApp = nullptr;

 private:
  void FillList();

  CTracesList m_traces;
  std::optional<SubmitResult> m_submitted;
};
