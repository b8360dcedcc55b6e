// The steps of the context menu: what their items say, and the tests that they add.
#include "panes/cell_steps.h"

#include <gtest/gtest.h>

#include "documents/trace_doc.h"
#include "docview/commands/command_ids.h"
#include "panes/document_names.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "where/text/where_parser.h"

namespace {

const NameMap kNames = {{1, {"web"}}, {3, {"4711 alice"}}, {4, {"main"}}};

std::string LabelOf(const CellValue& cell) {
  const std::vector<CellStep> steps = StepsOfCell(cell, nullptr, kNames);
  return steps.empty() ? "" : steps.front().label;
}

TEST(CellSteps, SayTheFieldAndTheValueAsOneShortLine) {
  EXPECT_EQ(LabelOf({WhereField::Component, "Sql"}), "&Only This Component \"Sql\"");
  EXPECT_EQ(LabelOf({WhereField::Tic, "17"}), "&Only This Tic Count \"17\"");
  EXPECT_EQ(LabelOf({WhereField::Text, "a\n\x01 & \xFF"}),
            "&Only This Text \"a\\n\\x01 && \\xff\"");
  const std::string longLabel = LabelOf({WhereField::Text, std::string(500, 'x')});
  EXPECT_LT(longLabel.size(), 80U);
  EXPECT_TRUE(longLabel.ends_with("...\"")) << longLabel;
}

TEST(CellSteps, OfAPlaceWithoutATraceAreThoseOfTheValue) {
  const auto steps = StepsOfCell(CellValue{WhereField::Machine, "web"}, nullptr, kNames);
  ASSERT_EQ(steps.size(), 2U);
  EXPECT_EQ(steps[0].text, "machine == web");
  EXPECT_EQ(steps[1].text, "machine != web");
  EXPECT_TRUE(StepsOfCell(std::nullopt, nullptr, kNames).empty());
}

TEST(CellSteps, EachIsATextThatCanBeRead) {
  const auto event = MakeEvent({.text = "up", .machine = 1, .pid = 3, .tid = 4});
  const auto steps = StepsOfCell(CellValue{WhereField::Text, "\"\\\xC3\n"}, event.get(), kNames);
  ASSERT_EQ(steps.size(), 4U);
  for (const CellStep& step : steps) {
    WhereError error;
    EXPECT_TRUE(ParseWhere(step.text, error)) << step.text << ": " << error.reason;
  }
  EXPECT_EQ(steps[2].command, static_cast<unsigned>(ID_FILTER_ONLYTHREAD));
  EXPECT_NE(steps[2].text.find("account == alice"), std::string::npos) << steps[2].text;
}

TEST(CellSteps, AroundATraceWithoutAMomentThereIsNone) {
  const auto event = MakeEvent({.text = "up", .date = 0, .time = 0xFFFFFFFF});
  EXPECT_EQ(StepsOfCell(std::nullopt, event.get(), kNames).size(), 1U);
}

TEST(DocumentNames, AreThoseOfTheFieldWithProcessAndAccountApart) {
  RecordingHost host;
  CTraceDoc document(host);
  document.m_names = kNames;
  document.AddTrace(MakeEvent({.text = "up", .machine = 1, .pid = 3, .tid = 4}).release());
  using Strings = std::vector<std::string>;
  EXPECT_EQ(DocumentNames(document, WhereField::Machine), Strings{"web"});
  EXPECT_EQ(DocumentNames(document, WhereField::Pid), Strings{"4711"});
  EXPECT_EQ(DocumentNames(document, WhereField::Account), Strings{"alice"});
  EXPECT_EQ(DocumentNames(document, WhereField::Tid), Strings{"main"});
  EXPECT_EQ(DocumentNames(document, WhereField::Component), Strings{}) << "an empty name is none";
  EXPECT_EQ(DocumentNames(document, WhereField::Text), Strings{});
}

}  // namespace
