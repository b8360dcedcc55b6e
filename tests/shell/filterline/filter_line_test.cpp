// The line of filter text by itself: what is typed, applied, walked and completed.
#include "shell/filterline/filter_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/registry.h"
#include "support/fake_filter_line.h"
#include "support/temp_dir.h"

namespace {

using Strings = std::vector<std::string>;

class Owner final : public FilterLineOwner {
 public:
  WhereProgramPtr WhereInForce() const override { return m_inForce; }
  bool ApplyWhere(const WhereProgramPtr& program) override {
    ++m_asked;
    if (m_cancels) return false;
    if (m_slow && !m_progress) m_before = m_inForce;
    if (m_slow) m_progress = 123;
    m_inForce = program;
    return true;
  }
  CTraceFilter FilterInForce() const override {
    CTraceFilter filter = m_marks;
    filter.where = m_inForce;
    return filter;
  }
  bool ApplyFilter(const CTraceFilter& filter) override {
    if (!ApplyWhere(filter.where)) return false;
    m_marks = filter;
    return true;
  }
  bool IsTree(const WhereExpr& expr, WhereError& error) const override {
    error = {expr.place, expr.length, "no tree says this", {}};
    return expr.kind == WhereExpr::Kind::Test;
  }
  bool OpenAsTree(const WhereExpr& expr, WhereError& error) override {
    if (!IsTree(expr, error)) return false;
    ++m_opened;
    return true;
  }
  std::optional<int> WhereProgress() const override { return m_progress; }
  void CancelWhere() override {
    if (m_progress) m_inForce = m_before;
    m_progress.reset();
  }
  std::vector<std::string> WhereNamesOf(WhereField field) const override {
    return field == WhereField::Component ? Strings{"Sql", "two words", "bad\xFFname"} : Strings{};
  }
  void PutAwayFilterLine() override { ++m_putAway; }
  std::string Text() const { return m_inForce ? m_inForce->Text() : "(all)"; }

  WhereProgramPtr m_inForce;
  CTraceFilter m_marks;
  int m_opened = 0;
  bool m_cancels = false;
  bool m_slow = false;  // texts are applied in the background
  WhereProgramPtr m_before;
  std::optional<int> m_progress;
  int m_asked = 0, m_putAway = 0;
};

class FilterLineTest : public testing::Test {
 protected:
  FilterLineTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    m_line.SetFace(&m_face);
  }
  ~FilterLineTest() override { SetSettingsFile(""); }
  bool Type(const std::string& text) {
    m_line.Edit(text);
    return m_line.Apply();
  }
  WhereCompletion Completion(const std::string& insert) {
    for (const WhereCompletion& each : m_line.CompletionsAt(m_line.Text().size())) {
      if (each.insert == insert) return each;
    }
    ADD_FAILURE() << "no completion " << insert;
    return {};
  }

  TempDir m_dir;
  Owner m_owner;
  FilterLine m_line{m_owner};
  FakeFilterLine* m_slot = nullptr;
  FakeFilterLine m_face{m_line, m_slot};
};

TEST_F(FilterLineTest, WhatIsTypedFiltersNothingUntilItIsApplied) {
  m_line.Edit("severity >= warn");
  EXPECT_EQ(m_owner.m_asked, 0);
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited);
  EXPECT_EQ(m_face.m_message, "Enter applies this text.");
  EXPECT_TRUE(m_line.Apply());
  EXPECT_EQ(m_owner.Text(), "severity >= warn");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::InForce);
  EXPECT_EQ(m_face.m_message, "Applied.");
  m_line.Edit("severity >= warn ");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited);
  EXPECT_EQ(m_owner.m_asked, 1);
}

TEST_F(FilterLineTest, AWrongTextIsNotAppliedAndSaysWhere) {
  Type("verbose");
  EXPECT_FALSE(Type("component == \"\u00e9\" and componet == Net"));
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Wrong);
  ASSERT_TRUE(m_line.Error());
  EXPECT_EQ(m_line.Error()->place, 22U) << "bytes";
  EXPECT_EQ(m_face.m_message,
            "Column 22: there is no field \"componet\"; did you mean \"component\"?")
      << "characters, from 1";
  EXPECT_FALSE(Type("text matches \"a(b\""));
  EXPECT_THAT(m_face.m_message, testing::StartsWith("Column 18: "));
}

TEST_F(FilterLineTest, ABlankTextShowsAllTraces) {
  Type("verbose");
  m_line.Edit("  ");
  EXPECT_EQ(m_face.m_message, "Enter shows all traces again.");
  EXPECT_TRUE(m_line.Apply());
  EXPECT_EQ(m_owner.Text(), "(all)");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::InForce);
}

TEST_F(FilterLineTest, ATextThatIsInForceIsNotBuiltAgain) {
  Type("verbose");
  EXPECT_TRUE(m_line.Apply());
  EXPECT_EQ(m_owner.m_asked, 1);
}

TEST_F(FilterLineTest, ACancelledApplyLeavesTextAndWhatIsInForce) {
  Type("verbose");
  m_owner.m_cancels = true;
  EXPECT_FALSE(Type("developer"));
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.Text(), "developer");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited);
  EXPECT_FALSE(m_line.CanGoForward());
  EXPECT_EQ(RecentFilters(), Strings{"verbose"});
}

TEST_F(FilterLineTest, PutAwayItFiltersNothingAndKeepsItsText) {
  Type("verbose");
  m_owner.m_cancels = true;
  EXPECT_FALSE(m_line.Release());
  EXPECT_EQ(m_owner.Text(), "verbose");
  m_owner.m_cancels = false;
  EXPECT_TRUE(m_line.Release());
  EXPECT_EQ(m_owner.Text(), "(all)");
  EXPECT_EQ(m_line.Text(), "verbose");
  const int asked = m_owner.m_asked;
  EXPECT_TRUE(m_line.Release());
  EXPECT_EQ(m_owner.m_asked, asked) << "nothing to rebuild";
}

TEST_F(FilterLineTest, StepsGoBackAndForth) {
  EXPECT_FALSE(m_line.CanGoBack());
  Type("verbose");
  Type("developer");
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.Text(), "verbose");
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "(all)");
  EXPECT_FALSE(m_line.GoBack());
  EXPECT_TRUE(m_line.GoForward());
  EXPECT_TRUE(m_line.GoForward());
  EXPECT_EQ(m_owner.Text(), "developer");
  EXPECT_FALSE(m_line.GoForward());
}

TEST_F(FilterLineTest, ACancelledStepIsTakenBack) {
  Type("verbose");
  Type("developer");
  m_owner.m_cancels = true;
  EXPECT_FALSE(m_line.GoBack());
  EXPECT_EQ(m_line.Text(), "developer");
  m_owner.m_cancels = false;
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "verbose");
  m_owner.m_cancels = true;
  EXPECT_FALSE(m_line.GoForward());
  m_owner.m_cancels = false;
  EXPECT_TRUE(m_line.GoForward());
  EXPECT_EQ(m_owner.Text(), "developer");
}

TEST_F(FilterLineTest, AStepIsAddedToWhatIsInForceNotToWhatIsTyped) {
  Type("verbose or stack");
  m_line.Edit("half a te");
  EXPECT_TRUE(m_line.AddStep("component == Sql"));
  EXPECT_EQ(m_owner.Text(), "(verbose or stack) and component == Sql");
  EXPECT_EQ(m_line.Text(), m_owner.Text());
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "verbose or stack");
}

TEST_F(FilterLineTest, ACompletionReplacesWhatIsTypedAndPutsTheCaretBehindIt) {
  m_line.Edit("comp");
  EXPECT_EQ(m_line.Complete(Completion("component")), 10U);
  EXPECT_EQ(m_line.Text(), "component ");
  m_line.Edit("component == two");
  m_line.Complete(Completion("\"two words\""));
  EXPECT_EQ(m_line.Text(), "component == \"two words\" ");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited);
}

TEST_F(FilterLineTest, ANameOfHostileBytesIsInsertedInQuotesAndStaysAText) {
  m_line.Edit("component == bad");
  const auto all = m_line.CompletionsAt(m_line.Text().size());
  ASSERT_EQ(all.size(), 1U);
  m_line.Complete(all.front());
  EXPECT_THAT(m_line.Text(), testing::StartsWith("component == \"bad\\x"));
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited) << m_line.Message();
}

TEST_F(FilterLineTest, InTheMiddleOfATextACompletionLeavesTheRest) {
  m_line.Edit("comp == Sql");
  const auto all = m_line.CompletionsAt(4);
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(m_line.Complete(all.front()), 10U);
  EXPECT_EQ(m_line.Text(), "component == Sql");
}

TEST_F(FilterLineTest, UpAndDownWalkTheTextsOfAllWindows) {
  for (const char* const text : {"verbose", "developer", "stack", "developer"}) Type(text);
  EXPECT_EQ(RecentFilters(), (Strings{"developer", "stack", "verbose"}));
  FilterLine other(m_owner);
  other.Edit("half");
  EXPECT_FALSE(other.ShowNewer());
  EXPECT_TRUE(other.ShowOlder());
  EXPECT_EQ(other.Text(), "developer");
  EXPECT_TRUE(other.ShowOlder());
  EXPECT_TRUE(other.ShowOlder());
  EXPECT_EQ(other.Text(), "verbose");
  EXPECT_FALSE(other.ShowOlder());
  EXPECT_TRUE(other.ShowNewer());
  EXPECT_TRUE(other.ShowNewer());
  EXPECT_TRUE(other.ShowNewer());
  EXPECT_EQ(other.Text(), "half") << "what was typed is behind the newest";
  EXPECT_FALSE(other.ShowNewer());
}

TEST_F(FilterLineTest, TheTextThatStandsInTheLineIsNoStepUp) {
  Type("verbose");
  Type("developer");
  EXPECT_TRUE(m_line.ShowOlder());
  EXPECT_EQ(m_line.Text(), "verbose");
}

TEST_F(FilterLineTest, TwentyTextsAreKeptOfBoundedLength) {
  for (int i = 0; i < 25; ++i) NoteRecentFilter("line == " + std::to_string(i));
  EXPECT_EQ(RecentFilters().size(), 20U);
  EXPECT_EQ(RecentFilters().front(), "line == 24");
  NoteRecentFilter(std::string(kStoredFilterBytes + 1, 'x'));
  NoteRecentFilter("");
  EXPECT_EQ(RecentFilters().front(), "line == 24");
}

TEST_F(FilterLineTest, ALineEndThatWasPastedIsABlank) {
  m_line.Edit("verbose\nand\r\nstack");
  EXPECT_EQ(m_line.Text(), "verbose and  stack");
}

TEST(SavedFilters, AreSortedReplacedByNameAndDeleted) {
  const TempDir dir;
  SetSettingsFile(dir.File("settings.ini"));
  std::string why;
  EXPECT_TRUE(SaveFilter("slow", "delta > 1s", &why)) << why;
  EXPECT_TRUE(SaveFilter(" Errors\tof\nSql ", "severity == error", &why)) << why;
  EXPECT_TRUE(SaveFilter("SLOW", "delta > 2s", &why)) << why;
  const auto shown = [] {
    Strings all;
    for (const SavedFilter& filter : ReadSavedFilters())
      all.push_back(filter.name + "|" + filter.text);
    return all;
  };
  EXPECT_EQ(shown(), (Strings{"Errors of Sql|severity == error", "SLOW|delta > 2s"}));
  EXPECT_FALSE(SaveFilter(" \t", "verbose", &why));
  EXPECT_EQ(why, "A saved filter needs a name.");
  EXPECT_FALSE(SaveFilter("long", std::string(kStoredFilterBytes + 1, 'x'), &why));
  for (int i = 2; i < 100; ++i) EXPECT_TRUE(SaveFilter(std::to_string(i), "stack"));
  EXPECT_FALSE(SaveFilter("one more", "stack", &why));
  EXPECT_TRUE(SaveFilter("slow", "stack", &why)) << "in place of the old one";
  DeleteSavedFilter("sLow");
  EXPECT_EQ(ReadSavedFilters().size(), 99U);
  SetSettingsFile("");
}

// ---- the filter dialog's tree

TEST_F(FilterLineTest, ATreeAsTextIsAddedToTheTextInForceAndItsMarksGoInTheSameStep) {
  Type("verbose");
  m_owner.m_marks.allTraces = m_owner.m_marks.allSeverities = 0;
  m_owner.m_marks.severities = {0, 1, 1};
  m_owner.m_asked = 0;
  ASSERT_TRUE(m_line.TakeTree("severity >= warn"));
  EXPECT_EQ(m_owner.m_asked, 1);
  EXPECT_EQ(m_owner.Text(), "verbose and severity >= warn");
  EXPECT_EQ(m_owner.m_marks.allTraces, 1);
  EXPECT_EQ(m_line.GetState(), FilterLine::State::InForce);
  ASSERT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.Text(), "verbose");
  EXPECT_EQ(m_owner.m_marks.severities, (std::vector<int>{0, 1, 1}));
  EXPECT_EQ(m_owner.m_marks.allTraces, 0);
  ASSERT_TRUE(m_line.GoForward());
  EXPECT_EQ(m_owner.Text(), "verbose and severity >= warn");
  EXPECT_EQ(m_owner.m_marks.allTraces, 1);
}

TEST_F(FilterLineTest, ATreeThatIsTooLongBesideTheTextInForceIsRefusedWithAReason) {
  ASSERT_TRUE(Type("text contains \"" + std::string(kWhereTextMax - 100, 'x') + "\""));
  std::string why;
  EXPECT_FALSE(m_line.TakeTree("component != \"" + std::string(100, 'y') + "\"", &why));
  EXPECT_EQ(why, "The tree and the filter text are too long for one text.");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::InForce);
  EXPECT_EQ(m_owner.m_marks.allTraces, 1);
}

TEST_F(FilterLineTest, ATreeThatWasChangedBehindAStepIsThereWhenOneComesBack) {
  m_line.TakeTree("verbose");
  m_owner.m_marks.allTraces = 0;
  m_line.GoBack();
  EXPECT_EQ(m_owner.m_marks.allTraces, 1);
  m_line.GoForward();
  EXPECT_EQ(m_owner.m_marks.allTraces, 0);
}

TEST_F(FilterLineTest, AStepWithoutATreeLeavesTheMarksAsTheyAre) {
  Type("verbose");
  Type("stack");
  m_owner.m_marks.allTraces = 0;
  m_line.GoBack();
  EXPECT_EQ(m_owner.m_marks.allTraces, 0);
}

TEST_F(FilterLineTest, ATreeTakesThePlaceOfTheTextAndOneStepLeadsBack) {
  Type("severity >= warn");
  CTraceFilter tree;
  tree.allTraces = tree.allSeverities = tree.severities[0] = 0;
  ASSERT_TRUE(m_line.BecomeTree(tree));
  EXPECT_EQ(m_owner.Text(), "(all)");
  EXPECT_EQ(m_line.Text(), "");
  EXPECT_EQ(m_owner.m_marks.severities[0], 0);
  ASSERT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "severity >= warn");
  EXPECT_EQ(m_owner.m_marks.severities[0], 1);
}

TEST_F(FilterLineTest, ACancelledStepOfATreeChangesNothing) {
  Type("verbose");
  m_line.Edit("stac");
  m_owner.m_cancels = true;
  EXPECT_FALSE(m_line.TakeTree("stack"));
  EXPECT_FALSE(m_line.BecomeTree(CTraceFilter()));
  EXPECT_EQ(m_line.Text(), "stac");
  EXPECT_EQ(m_owner.Text(), "verbose");
  m_owner.m_cancels = false;
  m_line.TakeTree("stack");
  m_owner.m_cancels = true;
  EXPECT_FALSE(m_line.GoBack());
  EXPECT_EQ(m_line.Text(), "verbose and stack");
  m_owner.m_cancels = false;
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "verbose");
}

TEST_F(FilterLineTest, WhyATextIsNoTreeHasItsColumn) {
  EXPECT_EQ(m_line.WhyNoTree(), "There is no filter text.");
  m_line.Edit("sev");
  EXPECT_EQ(m_line.WhyNoTree(), m_line.Message());
  m_line.Edit("  (verbose or stack)");
  EXPECT_EQ(m_line.WhyNoTree(), "Column 3: no tree says this");
  m_line.Edit("verbose");
  EXPECT_EQ(m_line.WhyNoTree(), "");
  EXPECT_TRUE(m_line.OpenAsTree());
  EXPECT_EQ(m_owner.m_opened, 1);
  std::string why;
  m_line.Edit("  (verbose or stack)");
  EXPECT_FALSE(m_line.OpenAsTree(&why));
  EXPECT_EQ(why, "Column 3: no tree says this");
  m_line.Edit("sev");
  EXPECT_FALSE(m_line.OpenAsTree(&why));
  EXPECT_EQ(why, m_line.Message());
  EXPECT_EQ(m_owner.m_opened, 1);
}

// ---- a text that is applied in the background

TEST_F(FilterLineTest, ATextThatIsBeingAppliedSaysHowFarItIsAndThenThatItIsApplied) {
  m_owner.m_slow = true;
  EXPECT_TRUE(Type("verbose"));
  EXPECT_EQ(m_face.m_message, "Filtering: 12 %. Esc stops it.");
  EXPECT_EQ(m_face.m_percent, 12);
  m_owner.m_progress = 999;
  m_line.OnStatus();
  EXPECT_EQ(m_face.m_percent, 99);
  m_owner.m_progress.reset();
  m_line.OnStatus();
  EXPECT_EQ(m_face.m_percent, std::nullopt);
  EXPECT_EQ(m_face.m_message, "Applied.");
  EXPECT_TRUE(m_line.CanGoBack());
}

TEST_F(FilterLineTest, EscapeStopsATextAndOnlyThenPutsTheLineAway) {
  Type("verbose");
  m_owner.m_slow = true;
  Type("developer");
  m_line.Escape();
  EXPECT_EQ(m_owner.m_putAway, 0);
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.Text(), "developer") << "what was typed stays";
  EXPECT_EQ(m_line.GetState(), FilterLine::State::Edited);
  EXPECT_FALSE(m_line.CanGoForward());
  EXPECT_TRUE(m_line.GoBack()) << "a stopped text is no step";
  EXPECT_EQ(m_owner.Text(), "(all)");
  m_owner.m_progress.reset();
  m_line.Escape();
  EXPECT_EQ(m_owner.m_putAway, 1);
}

TEST_F(FilterLineTest, AStoppedStepLeavesTheLineAndItsStepsAsTheyWere) {
  Type("verbose");
  ASSERT_TRUE(m_line.AddStep("tid == main"));
  ASSERT_TRUE(m_line.GoBack());
  m_owner.m_slow = true;
  ASSERT_TRUE(m_line.GoForward());
  EXPECT_EQ(m_line.Text(), "verbose and tid == main");
  m_line.Stop();
  EXPECT_EQ(m_line.Text(), "verbose");
  EXPECT_EQ(m_line.GetState(), FilterLine::State::InForce);
  EXPECT_TRUE(m_line.CanGoForward());
  ASSERT_TRUE(m_line.AddStep("pid == 7"));
  m_line.Edit("typed meanwhile");
  m_line.Stop();
  EXPECT_EQ(m_line.Text(), "typed meanwhile");
  EXPECT_TRUE(m_line.CanGoForward()) << "the step forward is still there";
}

TEST_F(FilterLineTest, AStopAfterASecondTextLeadsBackToTheOneThatWasApplied) {
  Type("verbose");
  m_owner.m_slow = true;
  Type("developer");
  ASSERT_TRUE(m_line.AddStep("pid == 7"));
  EXPECT_EQ(m_owner.Text(), "developer and pid == 7");
  m_line.Stop();
  EXPECT_EQ(m_owner.Text(), "verbose");
  EXPECT_EQ(m_line.Text(), "developer");
  m_owner.m_slow = false;
  EXPECT_TRUE(m_line.GoBack());
  EXPECT_EQ(m_owner.Text(), "(all)");
  EXPECT_FALSE(m_line.CanGoBack());
}

}  // namespace
