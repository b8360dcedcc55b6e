// Three pages in one sheet, and what they reported, for the contracts of sheets and wizards.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "support/recording_host.h"
#include "support/sheet_button.h"
#include "support/sheet_contract_page.h"

// `Harness` as support/sheet_contract.h describes it.
template <class Harness>
class SheetFixture : public testing::Test {
 protected:
  static constexpr unsigned kFirst = 101, kSecond = 102, kThird = 103;
  static constexpr unsigned kName = ContractPage::kName, kNote = ContractPage::kNote,
                            kNumber = ContractPage::kNumber;

  // The next showing: begins as DoModal does.
  void Open() {
    m_sheet.OnInitDialog();
    m_window.emplace(m_sheet);
  }
  void Reopen() {
    m_window.reset();
    m_sheet.DoModal();  // nobody answers: cancelled
    m_log.clear();
    Open();
  }
  Harness& Window() { return *m_window; }
  SheetLog Reported() { return std::exchange(m_log, {}); }
  SheetLog ReportedBy(SheetButton button) {
    m_log.clear();
    Window().Press(button);
    return Reported();
  }
  std::string Enabled() {
    static constexpr std::pair<SheetButton, const char*> kAll[] = {
        {SheetButton::Ok, "ok "},       {SheetButton::Cancel, "cancel "},
        {SheetButton::Apply, "apply "}, {SheetButton::Back, "back "},
        {SheetButton::Next, "next "},   {SheetButton::Finish, "finish "}};
    std::string enabled;
    for (const auto& [button, name] : kAll)
      if (Window().CanPress(button)) enabled += name;
    return enabled;
  }

  RecordingHost m_host;
  SheetLog m_log;
  ContractPage m_a{m_host, kFirst, "A", m_log, 120}, m_b{m_host, kSecond, "B", m_log, 400},
      m_c{m_host, kThird, "C", m_log, 200};
  CPropertySheet m_sheet{m_host, "Configuration for web"};
  std::optional<Harness> m_window;
};
