#include "config/machine_dialog.h"

#include <utility>

#include "config/machine_browser.h"
#include "quor/client/trace_thread.h"

CMachineDlg::CMachineDlg(Host& host, std::string prompt, const char* helpTopic)
    : CDialog(host),
      m_strMachine(_trc_GetHostName()),
      m_strPrompt(std::move(prompt)),
      m_helpTopic(helpTopic) {}

void CMachineDlg::OnOK() {
  if (m_strMachine.empty()) m_strMachine = _trc_GetHostName();
  CDialog::OnOK();
}

void CMachineDlg::OnBrowse() {
  if (auto machine = BrowseForMachine(GetHost())) m_strMachine = std::move(*machine);
}
