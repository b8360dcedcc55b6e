#include "wizard/wizard_sheet.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"
#include "support/temp_dir.h"

#include "settings/registry.h"

namespace {

class NoProgram final : public WizardProgram {
 public:
  CMultiDocTemplate* ConfigTemplate() const override { return nullptr; }
  CMultiDocTemplate* FileTemplate() const override { return nullptr; }
  const ConfigClient& Client() const override { return m_client; }
  void OpenLocalMonitor() override {}

 private:
  ConfigClient m_client;
};

}  // namespace

TEST(WizardSheet, HasSevenPagesInOrder) {
  TempDir folder;
  SetSettingsFile(folder.File("settings.ini"));
  RecordingHost host;
  NoProgram program;
  CTraceWizardSheet wizard(host, program);
  std::string pages;
  for (const CPropertyPage* page : wizard.Pages())
    pages += std::to_string(page->Id()) + " " + page->Caption() + "\n";
  EXPECT_EQ(pages,
            "107 Trace Wizard: Welcome\n149 Trace Wizard: Mode\n143 Trace Wizard: Networking\n"
            "144 Trace Wizard: Machines\n145 Trace Wizard: Applications\n"
            "146 Trace Wizard: Traces\n148 Trace Wizard: Finish\n");
  EXPECT_EQ(wizard.Title(), "Setup Wizard");
  EXPECT_TRUE(wizard.IsWizard());
  SetSettingsFile("");
}
