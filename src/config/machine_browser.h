// A dialog to choose a machine from those whose names this machine knows.
//
// Shape    No system lists the machines of a network. The local machine is listed first, then those
//          that were used before and those of the hosts file.
// Errors   A hosts file that cannot be read gives no names.
// Threads  Interface thread.
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"

// The local machine, then the machines used before and the first name of each other machine in the
// hosts file, each once (in any case), in alphabetical order.
std::vector<std::string> KnownMachines();
// The same for a hosts file's text.
std::vector<std::string> MachinesIn(std::istream& hosts, const std::string& localName,
                                    const std::vector<std::string>& used = {});

// Lets the user choose among the machines that this one knows. Nothing without a choice.
std::optional<std::string> BrowseForMachine(Host& host);

class CMachineBrowser : public CDialog {
 public:
  static constexpr char kTitle[] = "Select a machine and press OK.";
  const char* HelpTopic() const override { return "monitor"; }

  CMachineBrowser(Host& host, std::vector<std::string> machines)
      : CDialog(host), m_machines(std::move(machines)) {}

  // REQUIRES: index < m_machines.size(), or -1 for none.
  void OnSelect(int index) { m_selected = index; }
  bool MayOK() const { return m_selected >= 0; }
  // Without a choice the dialog stays open.
  void OnOK() override {
    if (MayOK()) CDialog::OnOK();
  }
  // REQUIRES: a machine is selected.
  const std::string& Chosen() const { return m_machines[static_cast<std::size_t>(m_selected)]; }

  const std::vector<std::string> m_machines;

 private:
  int m_selected = -1;
};
