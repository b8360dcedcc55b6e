// The window of the wizard without a screen. A person presses only enabled buttons.
#pragma once

#include <string>

#include "support/fake_list_box.h"
#include "support/fake_property_sheet.h"
#include "support/fake_traces_controls.h"
#include "wizard/wizard_sheet.h"

struct FakeWizard : FakePropertySheet {
  explicit FakeWizard(CTraceWizardSheet& sheet)
      : FakePropertySheet(sheet),
        wizard(sheet),
        machines(sheet.MachinesPage()),
        applications(sheet.ApplicationPage(), ListBoxMode::Several),
        traces(sheet.TracesPage().Traces()) {
    sheet.OnInitDialog();
    AddPage(400).Bind(CWizWelcomePage::kAutoStart, sheet.WelcomePage().m_bAutoStart);
    AddPage(400).Bind(CWizSelectPage::kTask, sheet.SelectPage().m_nTask);
    AddPage(400).Bind(CWizNetworkPage::kMode, sheet.NetworkPage().m_nNetworkMode);
    AddPage(400).Bind(CWizMachinesPage::kIdentical, sheet.MachinesPage().m_bIdentical);
    for (int page = 0; page < 3; ++page) AddPage(400);
    sheet.MachinesPage().Attach(machines);
    sheet.ApplicationPage().Attach(applications);
    Open();
  }
  ~FakeWizard() override {
    wizard.MachinesPage().Detach();
    wizard.ApplicationPage().Detach();
  }

  // The user sets a check box or a radio button of the page in front, by its number.
  void Choose(unsigned control, int number) { Type(control, std::to_string(number)); }
  void ClickAutoStart(bool on) {
    Choose(CWizWelcomePage::kAutoStart, on);
    wizard.WelcomePage().OnAutoStart();
  }
  void PressDelete() {
    if (wizard.MachinesPage().MayDelete()) wizard.MachinesPage().OnDelete();
  }
  // "back next": the buttons that can be pressed.
  std::string Enabled() const {
    std::string words;
    const auto add = [&](SheetButton button, const char* word) {
      if (CanPress(button)) words += (words.empty() ? "" : " ") + std::string(word);
    };
    add(SheetButton::Back, "back");
    add(SheetButton::Next, "next");
    add(SheetButton::Finish, "finish");
    return words;
  }
  // "*billing orders": a star before each selected item.
  static std::string Shown(const ListBox& list) {
    std::string text;
    for (int item = 0; item < list.Count(); ++item)
      text += (item ? " " : "") + std::string(list.IsSelected(item) ? "*" : "") + list.Text(item);
    return text;
  }

  CTraceWizardSheet& wizard;
  FakeListBox machines, applications;
  FakeTracesControls traces;
};
