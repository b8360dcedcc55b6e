#include "config/used_machines.h"

#include <gmock/gmock.h>

#include <sstream>

#include "config/machine_browser.h"
#include "quor/client/trace_thread.h"
#include "settings/registry.h"
#include "support/temp_dir.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class UsedMachinesTest : public testing::Test {
 protected:
  UsedMachinesTest() { SetSettingsFile(m_folder.File("settings.ini")); }
  ~UsedMachinesTest() override { SetSettingsFile(""); }

  TempDir m_folder;
};

TEST_F(UsedMachinesTest, ComeNewestFirstAndEachOnceInAnyCase) {
  EXPECT_THAT(UsedMachines(), IsEmpty());
  for (const char* const machine : {"mars", "venus:4711", "Mars"}) NoteUsedMachine(machine);
  EXPECT_THAT(UsedMachines(), ElementsAre("Mars", "venus:4711"));
}

TEST_F(UsedMachinesTest, ThisMachineIsNotKept) {
  for (const std::string& machine : {std::string(), std::string("LocalHost"), _trc_GetHostName()})
    NoteUsedMachine(machine);
  EXPECT_THAT(UsedMachines(), IsEmpty());
}

TEST_F(UsedMachinesTest, TenAreKept) {
  for (int machine = 1; machine <= 12; ++machine) NoteUsedMachine("m" + std::to_string(machine));
  const std::vector<std::string> used = UsedMachines();
  ASSERT_EQ(used.size(), 10U);
  EXPECT_EQ(used.front(), "m12");
  EXPECT_EQ(used.back(), "m3");
}

TEST_F(UsedMachinesTest, TheBrowserOffersThemAmongTheOthers) {
  NoteUsedMachine("not-in-the-hosts-file");
  EXPECT_THAT(KnownMachines(), Contains("not-in-the-hosts-file"));
  std::istringstream hosts("10.0.0.7 web\n10.0.0.8 Mars\n");
  EXPECT_THAT(MachinesIn(hosts, "desk", {"mars", "DESK", "venus"}),
              ElementsAre("desk", "mars", "venus", "web"));
}

}  // namespace
