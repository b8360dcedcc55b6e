// The fake window of a property sheet for the contract's pages.
#pragma once

#include "support/fake_property_sheet.h"
#include "support/sheet_contract_page.h"

struct FakeSheetHarness : FakePropertySheet {
  explicit FakeSheetHarness(CPropertySheet& sheet) : FakePropertySheet(sheet) {
    for (CPropertyPage* const each : sheet.Pages()) {
      auto& page = static_cast<ContractPage&>(*each);
      FakePropertyPage& window = AddPage(page.m_widthPx);
      window.Bind(ContractPage::kName, page.m_name);
      window.Bind(ContractPage::kNote, page.m_note);
      window.Bind(ContractPage::kNumber, page.m_number);
    }
    Open();
  }
};
