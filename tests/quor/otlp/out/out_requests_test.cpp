// Messages as requests: who stands with whom, and how much one request holds.
#include "quor/otlp/out/out_requests.h"

#include <gmock/gmock.h>

#include "quor/otlp/out/out_ids.h"

namespace {

using ::testing::SizeIs;

class OutRequestsTest : public testing::Test {
 protected:
  void Log(const std::string& process, const std::string& component, const std::string& text,
           OutWeight weight = {1, 0}) {
    const OutOrigin origin{m_instance, "web1", "orders", process};
    m_requests.NewLog(origin, component, weight).mutable_body()->set_string_value(text);
  }
  quor::otlp::ExportLogs LogsAt(std::size_t at) {
    quor::otlp::ExportLogs logs;
    EXPECT_TRUE(logs.ParseFromString(m_given.at(at).body));
    return logs;
  }
  static std::string Text(const quor::otlp::Resource& resource, const std::string& key) {
    for (const auto& attribute : resource.attributes())
      if (attribute.key() == key) return attribute.value().string_value();
    return "none";
  }
  const std::string m_instance = "0123456789abcdef";
  std::vector<OutRequest> m_given;
  OutRequests m_requests{[this](OutRequest request) { m_given.push_back(std::move(request)); }};
};

TEST_F(OutRequestsTest, MessagesOfOneOriginStandTogether) {
  Log("1", "Shop", "a");
  Log("2 alice", "Shop", "b");
  Log("1", "Van", "c");
  Log("1", "Shop", "d");
  m_requests.Flush();
  ASSERT_THAT(m_given, SizeIs(1));
  const quor::otlp::ExportLogs logs = LogsAt(0);
  ASSERT_EQ(logs.resource_logs_size(), 2);
  ASSERT_EQ(logs.resource_logs(0).scope_logs_size(), 2);
  EXPECT_EQ(logs.resource_logs(0).scope_logs(0).scope().name(), "Shop");
  ASSERT_EQ(logs.resource_logs(0).scope_logs(0).log_records_size(), 2);
  EXPECT_EQ(logs.resource_logs(0).scope_logs(0).log_records(1).body().string_value(), "d");
  const quor::otlp::Resource& resource = logs.resource_logs(1).resource();
  EXPECT_EQ(Text(resource, "service.name"), "orders");
  EXPECT_EQ(Text(resource, "host.name"), "web1");
  EXPECT_EQ(Text(resource, "process.owner"), "alice");
  EXPECT_EQ(Text(resource, "service.instance.id"), "30313233343536373839616263646566");
}

// A receiver groups by the resource; two with the same joined text are still two.
TEST_F(OutRequestsTest, OriginsWithTheSameLettersAreApart) {
  m_requests.NewLog({m_instance, "ab", "c", "1"}, "x", {1, 0});
  m_requests.NewLog({m_instance, "a", "bc", "1"}, "x", {1, 0});
  m_requests.Flush();
  EXPECT_EQ(LogsAt(0).resource_logs_size(), 2);
}

TEST_F(OutRequestsTest, AProcessThatIsNoNumberIsATextOfItsOwn) {
  Log("worker", "x", "a");
  m_requests.Flush();
  EXPECT_EQ(Text(LogsAt(0).resource_logs(0).resource(), "quor.process"), "worker");
}

TEST_F(OutRequestsTest, ARequestHasAtMostSoManyMessages) {
  for (int i = 0; i < 1025; ++i) Log("1", "Shop", "x", {1, i == 600 ? 7u : 0u});
  EXPECT_THAT(m_given, SizeIs(2));
  EXPECT_EQ(m_requests.Waiting(), 1u);
  m_requests.Flush();
  ASSERT_THAT(m_given, SizeIs(3));
  EXPECT_EQ(m_given[0].messages, 512u);
  EXPECT_EQ(m_given[1].weight.traces, 512u);
  EXPECT_EQ(m_given[1].weight.lost, 7u);
  EXPECT_EQ(m_given[2].messages, 1u);
  EXPECT_EQ(LogsAt(1).resource_logs(0).scope_logs(0).log_records_size(), 512);
  m_requests.Flush();
  EXPECT_THAT(m_given, SizeIs(3));
}

TEST_F(OutRequestsTest, LongTextsMakeSmallerRequests) {
  for (int i = 0; i < 100; ++i) Log("1", "Shop", std::string(60'000, 'x'));
  m_requests.Flush();
  EXPECT_GT(m_given.size(), 4u);
  for (const OutRequest& request : m_given)
    EXPECT_LT(request.body.size(), OutRequests::kBytesOfRequest + 70'000);
}

TEST_F(OutRequestsTest, LogsAndSpansAreRequestsOfTheirOwn) {
  Log("1", "Shop", "a");
  m_requests.NewSpan({m_instance, "web1", "orders", "1"}, "Shop", {2, 0}).set_name("pay");
  m_requests.Flush();
  ASSERT_THAT(m_given, SizeIs(2));
  EXPECT_EQ(m_given[0].kind, OutRequest::Kind::Logs);
  EXPECT_EQ(m_given[1].kind, OutRequest::Kind::Spans);
  quor::otlp::ExportSpans spans;
  ASSERT_TRUE(spans.ParseFromString(m_given[1].body));
  EXPECT_EQ(spans.resource_spans(0).scope_spans(0).spans(0).name(), "pay");
}

std::string Hex(const std::string& bytes) {
  std::string text;
  char digits[3];
  for (const char byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(byte));
    text += digits;
  }
  return text;
}

// A collector may hold blocks that an earlier release has sent.
TEST(OutIds, StayAsTheyAre) {
  const std::string instance(16, 'i');
  EXPECT_EQ(Hex(OutTraceId(instance, "17", 5)), "95c3c60a32f5ea388193e7cb96bdca2a");
  EXPECT_EQ(Hex(OutSpanId(instance, 5)), "ed519f47a7957dfc");
  EXPECT_EQ(Hex(OutInstanceOf("web1", "orders", "17", 5)), "d04471de10629c0c33a9a209703cf766");
}

TEST(OutIds, TextsWithTheSameLettersAreApart) {
  EXPECT_NE(OutInstanceOf("ab", "c", "1", 1), OutInstanceOf("a", "bc", "1", 1));
  EXPECT_NE(OutSpanId("i", 1), OutSpanId("i", 256));
}

}  // namespace
