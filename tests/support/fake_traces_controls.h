// The list of traces and its buttons without a screen. A person presses only enabled buttons.
#pragma once

#include "config/traces/traces_list.h"
#include "support/fake_report_list.h"

class FakeTracesControls final : public TracesControls {
 public:
  explicit FakeTracesControls(CTracesList& traces) : m_traces(traces), m_list(traces) {
    m_traces.Attach(*this);
  }
  ~FakeTracesControls() { m_traces.Detach(); }

  ReportList& List() override { return m_list; }
  void EnableButtons(bool on) override { m_enabled = on; }

  FakeReportList& Rows() { return m_list; }
  std::string EmptyText() const { return m_traces.ReportEmptyText(); }
  bool ButtonsEnabled() const { return m_enabled; }
  void Click(int row, int column) { m_list.Click(row, false, column); }
  void DoubleClick(int row, int column) { m_list.DoubleClick(row, column); }
  void PressPreset(unsigned settings) {
    if (m_enabled) m_traces.ApplySettings(settings);
  }
  // Selects this row alone, or all rows, and gives them these settings.
  void Give(int row, unsigned settings) {
    m_list.Click(row);
    PressPreset(settings);
  }
  void GiveAll(unsigned settings) {
    for (int row = 0; row < m_list.ItemCount(); ++row) m_list.Click(row, row > 0);
    PressPreset(settings);
  }
  void PressCustom() {
    if (m_enabled) m_traces.OnCustom();
  }
  // "Net|Connect|Off" for each row, separated by blanks.
  std::string Shown() const {
    std::string text;
    for (int row = 0; row < m_list.ItemCount(); ++row) text += (row ? " " : "") + m_list.Text(row);
    return text;
  }

 private:
  CTracesList& m_traces;
  FakeReportList m_list;
  bool m_enabled = false;
};
