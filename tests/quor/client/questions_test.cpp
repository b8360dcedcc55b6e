// Every question is sent once over each connection, whatever comes first.
#include "quor/client/questions.h"

#include <gtest/gtest.h>

namespace {

using quor::wire::Request;
using quor::wire::Response;

Request Open(const std::string& app) {
  Request request;
  request.mutable_open_app()->set_name(app);
  return request;
}

Response AnswerTo(std::uint32_t id) {
  Response response;
  response.set_id(id);
  return response;
}

std::string SentToAll(Questions& questions) {
  std::string sent;
  questions.SendAll([&sent](const Request& request) {
    sent += std::to_string(request.id()) + " " + request.open_app().name() + "\n";
  });
  return sent;
}

TEST(Questions, OneThatANewConnectionWasAskedIsNotSentOverItAgain) {
  Questions questions;
  const std::uint32_t id = questions.Add(Open("orders"));
  EXPECT_EQ(SentToAll(questions), "1 orders\n");
  EXPECT_EQ(questions.TakeUnsent(id), nullptr);
}

TEST(Questions, OneThatWasSentIsSentOverTheNextConnectionToo) {
  Questions questions;
  const std::uint32_t first = questions.Add(Open("orders")), second = questions.Add(Open("web"));
  const Request* const request = questions.TakeUnsent(first);
  ASSERT_NE(request, nullptr);
  EXPECT_EQ(request->id(), first);
  EXPECT_EQ(request->open_app().name(), "orders");
  EXPECT_EQ(questions.TakeUnsent(first), nullptr);
  EXPECT_EQ(SentToAll(questions), "1 orders\n2 web\n");
  EXPECT_EQ(questions.TakeUnsent(second), nullptr);
}

TEST(Questions, OneThatIsAnsweredOrGivenUpIsNotSent) {
  Questions questions;
  const std::uint32_t answered = questions.Add(Open("orders")), left = questions.Add(Open("web"));
  questions.TakeUnsent(answered);
  EXPECT_FALSE(questions.IsAnswered(answered));
  questions.Answer(AnswerTo(answered));
  questions.Answer(AnswerTo(4711));
  EXPECT_TRUE(questions.IsAnswered(answered));
  EXPECT_FALSE(questions.IsAnswered(left));
  EXPECT_FALSE(questions.WillOpen("orders"));
  EXPECT_TRUE(questions.WillOpen("web"));
  EXPECT_FALSE(questions.Take(left).has_value());
  EXPECT_EQ(questions.TakeUnsent(left), nullptr);
  EXPECT_FALSE(questions.WillOpen("web"));
  EXPECT_EQ(SentToAll(questions), "");
  EXPECT_EQ(questions.Take(answered)->id(), answered);
}

}  // namespace
