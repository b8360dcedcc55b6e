#include "shell/marks/mark_commands.h"

#include "docview/commands/command_ids.h"
#include "marks_fixture.h"
#include "shell/marks/note_dialog.h"

namespace {

using testing::HasSubstr;

using MarkCommandsTest = MarksTest;

TEST_F(MarkCommandsTest, TheSelectedRowsGetTheColourThatWasUsedLastAndLoseItAgain) {
  Focus(0);
  Select(2);
  m_commands.Mark(std::nullopt);
  EXPECT_EQ(Marks(), "0:1 2:1");
  m_commands.Mark(std::nullopt);
  EXPECT_EQ(Marks(), "");
  m_commands.Mark(4);
  EXPECT_EQ(MarkCommands::LastColour(), 4);
  m_commands.Mark(std::nullopt);
  m_commands.Mark(std::nullopt);
  EXPECT_EQ(Marks(), "0:4 2:4");
}

TEST_F(MarkCommandsTest, RowsOfWhichOnlySomeAreMarkedAreAllMarked) {
  Focus(1);
  m_commands.Mark(5);
  Select(2);
  m_commands.Mark(std::nullopt);
  EXPECT_EQ(Marks(), "1:5 2:5");
  m_commands.Mark(2);
  EXPECT_EQ(Marks(), "1:2 2:2") << "another colour takes nothing away";
  m_commands.Mark(2);
  EXPECT_EQ(Marks(), "");
}

TEST_F(MarkCommandsTest, InAFilteredListTheTracesAreMarkedThatAreShown) {
  m_file.Apply(m_view, "text in {one, three}");
  Focus(1);
  m_commands.Mark(3);
  EXPECT_EQ(Marks(), "2:3");
}

TEST_F(MarkCommandsTest, BehindASearchTheRowIsMarkedThatWasFound) {
  Focus(0);
  List().SetItemState(2, kRowFocused, kRowFocused);
  m_commands.Mark(3);
  EXPECT_EQ(Marks(), "2:3");
  Select(1);
  m_commands.Mark(4);
  EXPECT_EQ(Marks(), "0:4 1:4 2:3") << "several rows were selected on purpose";
}

TEST_F(MarkCommandsTest, WithoutASelectionNothingIsMarked) {
  m_commands.Mark(3);
  m_commands.EditNote();
  EXPECT_EQ(Marks(), "");
}

TEST_F(MarkCommandsTest, AColourInTheSettingsThatThereIsNotIsTheNearestOne) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Mark Colour", 0U);
  EXPECT_EQ(MarkCommands::LastColour(), 1);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Mark Colour", 4'000'000'000U);
  EXPECT_EQ(MarkCommands::LastColour(), 9);
}

TEST_F(MarkCommandsTest, NextAndPreviousGoAroundAndSaySo) {
  Notes().Mark({1, 4}, 2);
  Notes().SetNote(5, "note");
  Focus(0);
  for (const int row : {1, 4, 5}) {
    m_commands.GoOn(true);
    EXPECT_EQ(Focused(), row);
    EXPECT_EQ(m_said, "nothing");
  }
  m_commands.GoOn(true);
  EXPECT_EQ(Focused(), 1);
  EXPECT_THAT(m_said, HasSubstr("went on with the first"));
  m_commands.GoOn(false);
  EXPECT_EQ(Focused(), 5);
  EXPECT_THAT(m_said, HasSubstr("went on with the last"));
  m_commands.GoOn(false);
  EXPECT_EQ(Focused(), 4);
  EXPECT_EQ(m_said, "");
}

TEST_F(MarkCommandsTest, NextGoesOnlyToWhatIsShown) {
  Notes().Mark({0, 1, 2}, 2);
  m_file.Apply(m_view, "text in {one, three}");
  Focus(0);
  m_commands.GoOn(true);
  EXPECT_EQ(Focused(), 1);
  EXPECT_EQ(m_view.CurrentEvent(), m_file.m_document.m_traces[2]);
  m_file.Apply(m_view, "text contains aaa");
  m_commands.GoOn(true);
  EXPECT_THAT(m_said, HasSubstr("No trace that is shown"));
}

TEST_F(MarkCommandsTest, ANoteIsWrittenReadAndTakenAway) {
  Focus(1);
  m_file.m_host.AnswerDialog([](CDialog& dialog) {
    auto& note = dynamic_cast<CNoteDialog&>(dialog);
    EXPECT_EQ(note.Trace(), "two");
    EXPECT_EQ(note.m_text, "");
    note.m_text = std::string(100'000, 'x') + "\nend";
    note.OnOK();
  });
  m_commands.EditNote();
  EXPECT_EQ(Notes().Of(*m_file.m_document.m_traces[1]).note.size(), 100'004u);
  m_file.m_host.AnswerDialog([](CDialog& dialog) {
    auto& note = dynamic_cast<CNoteDialog&>(dialog);
    EXPECT_TRUE(note.m_text.ends_with("\nend"));
    note.m_text.clear();
    note.OnOK();
  });
  m_commands.EditNote();
  EXPECT_TRUE(Notes().Notes().empty());
}

TEST_F(MarkCommandsTest, ANoteOfATraceThatWentMeanwhileIsNotLostNorPutElsewhere) {
  Focus(1);
  m_file.m_host.AnswerDialog([this](CDialog& dialog) {
    auto& note = dynamic_cast<CNoteDialog&>(dialog);
    note.m_text = "kept";
    m_file.m_document.m_traces.PopFront();
    m_file.m_document.m_traces.PopFront();
    note.OnOK();
    EXPECT_FALSE(dialog.Ended()) << "the text can still be copied";
    EXPECT_THAT(m_file.m_host.Reported(), HasSubstr("The trace has gone meanwhile"));
  });
  m_commands.EditNote();
  EXPECT_TRUE(Notes().Notes().empty());
}

TEST_F(MarkCommandsTest, ANoteWhoseTraceWasClearedGoesToNoOtherOne) {
  CTraceDoc monitor(m_file.m_host);
  CNoteDialog dialog(m_file.m_host, monitor.Notes(), 0, "old");
  monitor.m_traces.Clear();
  monitor.AddTrace(TraceEvent_i::Create(1, 1, 1, 1, 1, 0, 0, 0, 1, 1, 0, 1, 1, "new", ""));
  dialog.m_text = "of the old one";
  dialog.OnOK();
  EXPECT_FALSE(dialog.Ended());
  EXPECT_TRUE(monitor.Notes().Notes().empty());
}

TEST_F(MarkCommandsTest, TheStatesOfTheCommandsFollowTheRow) {
  std::map<unsigned, std::function<void(CCmdUI&)>> updates;
  std::map<unsigned, std::function<void()>> runs;
  m_commands.MapWith([&](unsigned id, std::function<void()> run, std::function<void(CCmdUI&)> ui) {
    runs[id] = std::move(run);
    updates[id] = std::move(ui);
  });
  const auto state = [&](unsigned id) {
    CCmdUI ui(id, true, false);
    updates.at(id)(ui);
    return ui;
  };
  EXPECT_FALSE(state(ID_EDIT_MARK).IsEnabled());
  EXPECT_FALSE(state(ID_EDIT_NEXTMARK).IsEnabled());
  EXPECT_EQ(state(ID_EDIT_NEXTMARK).WhyNot(), "No trace has a mark or a note");
  Focus(1);
  EXPECT_TRUE(state(ID_EDIT_MARK).IsEnabled());
  runs.at(ID_EDIT_MARK1 + 6)();
  EXPECT_EQ(Marks(), "1:7");
  EXPECT_TRUE(state(ID_EDIT_MARK1 + 6).IsChecked());
  EXPECT_FALSE(state(ID_EDIT_MARK1 + 5).IsChecked());
  EXPECT_TRUE(state(ID_EDIT_PREVIOUSMARK).IsEnabled());
  EXPECT_EQ(runs.size(), 13u);
}

}  // namespace
