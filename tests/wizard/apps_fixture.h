// The wizard on its page of applications, led there by a person.
#pragma once

#include <string>
#include <vector>

#include "support/wizard_fixture.h"
#include "support/wizard_table_text.h"

inline const std::string kTcfLine1 = "TCF Version 3.2\n";

class AppsFixture : public WizardFixture {
 protected:
  enum Mode { kLocal, kRemote, kSame };

  // Fresh machines: a test runs its own applications on them.
  AppsFixture() {
    for (auto& [name, machine] : m_program.Machines()) machine.m_apps.clear();
  }
  // This machine in local mode, else "disk" and "web".
  FakeMachine& Here() { return m_program.Machine("localhost"); }
  FakeMachine& Disk() { return m_program.Machine("disk"); }
  FakeMachine& Web() { return m_program.Machine("web"); }

  void Begin(Mode mode) {
    if (mode == kLocal)
      Walk("next next local next");
    else
      Walk("next next remote next add:disk add:web " +
           std::string(mode == kSame ? "same" : "each") + " next");
    for (auto& [name, machine] : m_program.Machines()) machine.m_log.clear();
    m_host.ClearTranscript();
  }

  CWizApplicationPage& Page() { return Sheet().ApplicationPage(); }
  FakeListBox& List() { return Window().applications; }
  FakeTracesControls& Traces() { return Window().traces; }
  // That of the first machine, or of the named one.
  WizMachine& Machine(const std::string& name = "") {
    return name.empty() ? Sheet().m_machines.begin()->second : Sheet().m_machines.at(name);
  }
  WizApps& Apps(const std::string& name = "") { return Machine(name).m_apps; }
  std::string Table(const std::string& name = "") { return TableText(Apps(name)); }
  std::string Shown() { return FakeWizard::Shown(List()); }
  // What was asked of a machine since the last look.
  static std::string Asked(FakeMachine& machine) { return std::exchange(machine.m_log, ""); }

  // What the user does; the page that is then in front.
  std::string Next() {
    EXPECT_TRUE(CanGoOn());
    Walk("next");
    return Where();
  }
  std::string Back() {
    Walk("back");
    return Where();
  }
  bool CanGoOn() {
    m_host.RunPosted();
    return Window().CanPress(SheetButton::Next);
  }
  void DoubleClick(int item) {
    List().DoubleClick(item);
    m_host.RunPosted();
  }
  // Presses Load and chooses this file.
  void LoadFile(const std::string& path) {
    m_host.AnswerFileDialog(path);
    Page().OnLoad();
    m_host.RunPosted();
  }
};
