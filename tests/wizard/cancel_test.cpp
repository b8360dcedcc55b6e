// Cancel on each page: no machine, no window and no unsent change is any
// different after it.
#include <algorithm>

#include "support/wizard_fixture.h"

namespace {

struct Page {
  std::string name, words;
};

std::vector<Page> Pages() {
  const std::string remote = "next next remote next add:web add:db each ";
  const std::string same = "next next remote next add:web add:db same next pick:orders,store next ";
  return {{"Welcome", ""},
          {"Mode", "next task:1"},
          {"Networking", "next next remote"},
          {"Machines", remote + "del:db"},
          {"Applications on THIS", "next next local next pick:billing,orders"},
          {"Applications on web", remote + "next pick:store next next pick:orders,shop"},
          {"Traces for orders on web", remote + "next pick:store next next pick:orders,shop next"},
          {"Traces for store", same + "next"},
          {"Finish", same + "next next"}};
}

class WizardCancel : public WizardFixture, public testing::WithParamInterface<Page> {
 protected:
  // What all machines hold and have in force, who is connected, and what was
  // sent to them.
  std::string Everything() {
    std::string state;
    for (auto& [name, machine] : m_program.Machines()) {
      state += name + " handles " + std::to_string(machine.m_handles) + "\n";
      for (const auto& [app, known] : machine.m_apps)
        state += " " + app + " " + machine.InForce(app) + " sink " +
                 std::to_string(known.sinkType) + known.sinkName + known.sinkOptions + " " +
                 std::to_string(known.instances) + std::to_string(known.prepared) +
                 std::to_string(known.first.size()) + "\n";
      for (const auto& [app, handles] : machine.m_open)
        state += " open " + app + " " + std::to_string(handles) + "\n";
    }
    for (std::size_t config = 0; config < m_program.Configs(); ++config)
      state += m_program.Config(config).GetTitle() + " " +
               std::to_string(m_program.Config(config).IsModified()) + "\n";
    return state;
  }
};

void PrintTo(const Page& page, std::ostream* to) {
  *to << page.name;
}

}  // namespace

TEST_P(WizardCancel, LeavesEveryMachineAndEveryWindowAsItWas) {
  CConfigDoc& open = m_program.OpenConfig("web");
  trace_App_i& edited = *open.AddApplication("orders");
  const unsigned trace = edited.GetTraceId("Net", "Open");
  edited.SetSettings(trace, 15);
  open.NoteSubmit(edited, false);  // the machine has not taken it
  open.SetModifiedFlag(false);
  const std::string before = Everything();
  m_log.Clear();
  for (auto& [name, machine] : m_program.Machines()) machine.m_log.clear();
  Walk(GetParam().words);
  ASSERT_EQ(Where(), GetParam().name);
  Walk("cancel");
  EXPECT_EQ(Where(), "cancelled");
  Close();
  EXPECT_EQ(Everything(), before);
  EXPECT_EQ(edited.GetSettings(trace), 15U);
  EXPECT_EQ(m_log.Reported(), "") << "no window, no monitor";
  EXPECT_EQ(Boxes(), "");
  for (auto& [name, machine] : m_program.Machines()) {
    std::istringstream asked(machine.m_log);
    for (std::string line; std::getline(asked, line);)
      EXPECT_TRUE(line == "list" || line.rfind("connect ", 0) == 0 || line.rfind("open ", 0) == 0)
          << name << ": " << line;
  }
}

INSTANTIATE_TEST_SUITE_P(EachPage, WizardCancel, testing::ValuesIn(Pages()));
