#include "symbols/stack_naming.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "symbols/naming_program.h"

namespace {

const std::string kRecorded = "/usr/bin/orders+0x12ab [0a1b2c3d4e5f]";

TEST(StackNaming, TheAnswerComesWithoutAWaitForTheQuestion) {
  const NamingProgram program(NamingProgram::kAnswers);
  StackNaming naming({}, program.Path());
  std::promise<std::string> answer;
  const auto question = std::make_shared<StackQuestion>(
      kRecorded, [&](const StackNames& names) { answer.set_value(names.frames.at(0).text); });
  naming.Ask(question);
  EXPECT_EQ(answer.get_future().get(), "Charge() at pay.cpp:12 (orders)");
  EXPECT_TRUE(question->IsWithdrawn()) << "an answer is given once";
}

TEST(StackNaming, AWithdrawnQuestionGetsNoAnswer) {
  bool answered = false;
  StackQuestion question(kRecorded, [&](const StackNames&) { answered = true; });
  question.Withdraw();
  question.Give({});
  EXPECT_FALSE(answered);
}

TEST(StackNaming, OfWaitingQuestionsTheLastIsAnswered) {
  const NamingProgram program(NamingProgram::kHangsUntilToldTo);
  StackNaming naming({}, program.Path());
  std::promise<void> first, last;
  bool middle = false;
  const auto ask = [&](const std::string& stack, StackQuestion::Answer answer) {
    const auto question = std::make_shared<StackQuestion>(stack, std::move(answer));
    naming.Ask(question);
    return question;
  };
  const auto begun = ask(kRecorded, [&](const StackNames&) { first.set_value(); });
  program.AwaitStart();
  const auto skipped = ask(kRecorded + "\n1", [&](const StackNames&) { middle = true; });
  const auto kept = ask("main", [&](const StackNames&) { last.set_value(); });
  program.Tell();
  first.get_future().get();
  last.get_future().get();
  EXPECT_FALSE(middle);
}

TEST(StackNaming, ItsEndWaitsForNoProcess) {
  const NamingProgram program(NamingProgram::kHangsUntilToldTo);
  const auto begin = std::chrono::steady_clock::now();
  {
    StackNaming naming({}, program.Path());
    naming.Ask(std::make_shared<StackQuestion>(kRecorded, [](const StackNames&) {}));
    program.AwaitStart();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

}  // namespace
