// The wizard over machines without processes, led by a person's words.
//
// Shape    Walk takes the words of wizard_words.h. A file is in the test's folder.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "config/machine_dialog.h"
#include "settings/registry.h"
#include "support/fake_wizard.h"
#include "support/fake_wizard_program.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/wizard_words.h"

// Something happens while a box is up.
class WizardHost final : public RecordingHost {
 public:
  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    if (m_onBox) m_onBox();
    return RecordingHost::MessageBox(request);
  }
  std::function<void()> m_onBox;
};

class WizardFixture : public testing::Test, protected WizardWords {
 protected:
  WizardFixture() {
    SetSettingsFile(m_folder.File("settings.ini"));
    m_program.Machine("localhost").Run("billing", {"Net/Open"});
    m_program.Machine("localhost").Run("orders", {"Net/Open", "Disk/Read"}, 4);
    m_program.Machine("web").Run("orders", {"Net/Open", "Disk/Read"});
    m_program.Machine("web").Run("shop", {"Cart/Add"});
    m_program.Machine("db").Run("store", {"Row/Put"});
  }
  ~WizardFixture() override {
    Close();
    SetSettingsFile("");
  }

  void Open() {
    Close();
    m_sheet = std::make_unique<CTraceWizardSheet>(m_host, m_program);
    m_window.emplace(*m_sheet);
    m_host.RunPosted();
  }
  void Close() {
    m_window.reset();
    m_sheet.reset();
  }
  CTraceWizardSheet& Sheet() { return *m_sheet; }
  FakeWizard& Window() { return *m_window; }

  // Opens the wizard if it is not open, and does what the words say.
  void Walk(const std::string& words) {
    if (!m_sheet) Open();
    for (const std::string& word : Split(words, ' ')) {
      DoWord(word);
      m_host.RunPosted();
    }
  }
  // What stands in front: the title, with THIS for this machine's name; "ended" and "cancelled".
  std::string Where() {
    if (m_sheet->Ended()) return m_sheet->Result() == CDialog::kIdOk ? "ended" : "cancelled";
    std::string title = m_window->Title();
    const std::size_t host = title.find("on " + _trc_GetHostName());
    if (host != std::string::npos) title.replace(host + 3, _trc_GetHostName().size(), "THIS");
    return title.substr(title.find(": ") + 2);
  }
  std::string Boxes() {
    std::string boxes;
    for (const std::string& line : m_host.Transcript())
      if (line.rfind("box", 0) == 0) boxes += line + "\n";
    m_host.ClearTranscript();
    return boxes;
  }
  static std::string Box(const std::string& text, const std::string& icon = "none") {
    return "box Tessera [" + icon + "] \"" + text + "\" (OK) -> OK\n";
  }
  static unsigned Stored(const char* name) {
    return NtRegGet(HKEY_CURRENT_USER, kRegWizard, name, 77U);
  }
  // "orders *shop": what a machine's table offers, with a star before each selected one.
  std::string Offered(const std::string& machine) {
    std::string names;
    for (const auto& [name, app] : m_sheet->m_machines.at(machine).m_apps)
      names += (names.empty() ? "" : " ") + std::string(app.m_bSelected ? "*" : "") + name;
    return names;
  }
  std::string MachineNames() {
    std::string names;
    for (const auto& [name, machine] : m_sheet->m_machines) names += name + " ";
    return names;
  }

  TempDir m_folder;
  WizardHost m_host;
  FrameLog m_log;
  FakeWizardProgram m_program{m_host, m_log};
  std::unique_ptr<CTraceWizardSheet> m_sheet;
  std::optional<FakeWizard> m_window;

 private:
  void UserPresses(SheetButton button) override { m_window->Press(button); }
  void UserChooses(unsigned control, int number) override { m_window->Choose(control, number); }
  void UserWillChooseFile(const std::optional<std::string>& name) override {
    if (!name) return m_host.AnswerFileDialog(std::nullopt);
    m_host.AnswerFileDialog(name->front() == '/' ? *name : m_folder.File(*name));
  }
  void GoesAway(const std::string& machine) override { m_program.Machine(machine).m_away = true; }
  void UserAdds(const std::string& machine) override {
    m_host.AnswerDialog([machine](CDialog& dialog) {
      auto& question = dynamic_cast<CMachineDlg&>(dialog);
      EXPECT_EQ(question.m_strPrompt, "What machine do you want to configure?");
      question.SetMachine(machine);
      question.OnOK();
    });
    m_sheet->MachinesPage().OnAdd();
  }
  void UserDeletes(const std::string& machine) override {
    m_window->machines.Click(m_window->machines.FindStringExact(machine));
    m_window->PressDelete();
  }
  // Clicks on the first and, with Ctrl, on the others.
  void UserPicks(const std::vector<std::string>& apps) override {
    for (const std::string& name : apps)
      m_window->applications.Click(m_window->applications.FindStringExact(name),
                                   &name != apps.data());
  }
};
