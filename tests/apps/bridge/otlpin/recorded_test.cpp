// What OpenTelemetry's own SDK sends: its recorded bytes, and where it is installed the SDK itself.
#include <gmock/gmock.h>

#include <algorithm>

#include "apps/bridge/otlpin/otlp_in_fixture.h"
#include "quor/otlp/otlp_messages.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::size_t Times(const std::string& text, const std::string& words) {
  std::size_t times = 0;
  for (std::size_t at = 0; (at = text.find(words, at)) != text.npos; ++at) ++times;
  return times;
}

std::size_t Count(const std::vector<std::string>& rows, const std::string& words) {
  return static_cast<std::size_t>(
      std::count_if(rows.begin(), rows.end(),
                    [&words](const std::string& row) { return row.find(words) != row.npos; }));
}

std::string LastLog() {
  LogMessage logs;
  logs.Add("the last one");
  return logs.message.SerializeAsString();
}

// The traces of some orders of sdk/orders.js: per order a log, two spans and an event; each third
// one has an exception; and one trace tells what the resource says.
std::size_t TracesOf(std::size_t orders) {
  return orders * 6 + orders / 3 + 1;
}

void CheckRows(const std::vector<std::string>& rows, std::size_t orders) {
  ASSERT_EQ(rows.size(), TracesOf(orders) + 1);
  EXPECT_THAT(rows.back(), HasSubstr("the last one")) << "something came twice, or not at all";
  for (std::size_t order = 0; order < orders; ++order) {
    const std::string row = "slow insert " + std::to_string(order) + " ";
    EXPECT_EQ(Count(rows, row), 1u) << row;
    EXPECT_EQ(Count(rows, "db.rows=" + std::to_string(order) + " "), 1u);
  }
  EXPECT_EQ(Count(rows, " Begin: POST /orders"), orders);
  EXPECT_EQ(Count(rows, " End: POST /orders"), orders);
  EXPECT_EQ(Count(rows, " Begin: insert"), orders);
  EXPECT_EQ(Count(rows, " Event: cache miss"), orders);
  EXPECT_EQ(Count(rows, "Event: exception "), orders / 3);
  EXPECT_EQ(Count(rows, " End: insert status=failed"), orders / 3);
  EXPECT_EQ(Count(rows, "user=J\xC3\xB6rg"), orders);
  EXPECT_EQ(Count(rows, "/srv/orders/pool.js:42"), orders);
  EXPECT_EQ(Count(rows, "resource:"), 1u);
}

struct Recording {
  const char* name;
  std::size_t orders;
  bool isBare = false;
};
void PrintTo(const Recording& recording, std::ostream* to) {
  *to << recording.name;
}

class OtlpRecorded : public OtlpInFixture, public testing::WithParamInterface<Recording> {
 protected:
  static std::string Bytes(unsigned connection) {
    const char* const folder = getenv("OTLP_RECORDED");
    return ReadIfThere(std::string(folder ? folder : "") + "/" + GetParam().name + "." +
                       std::to_string(connection) + ".http");
  }
};

TEST_P(OtlpRecorded, RequestsAreTakenOnceHoweverTheirBytesArrive) {
  StartQuord();
  BridgeProcess bridge;
  Connect(bridge);
  const auto watcher = Watch(TracesOf(GetParam().orders) + 1);
  unsigned connection = 0;
  std::size_t piece = 1;
  for (std::string bytes; !(bytes = Bytes(++connection)).empty(); piece += 700) {
    const std::size_t requests = Times(bytes, "POST /v1/");
    Exporter exporter(bridge);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
      ASSERT_TRUE(exporter.Send(bytes.substr(at, piece)));
    std::string answers;
    while (Times(answers, "HTTP/1.1 200 ") < requests) {
      const std::string more = exporter.Answer();
      ASSERT_FALSE(more.empty()) << answers;
      answers += more;
    }
    EXPECT_EQ(Times(answers, "HTTP/1.1 "), requests) << answers;
  }
  ASSERT_GE(connection, 3u) << "nothing is recorded";
  EXPECT_THAT(Exporter(bridge).Post("/v1/logs", LastLog()), StartsWith("HTTP/1.1 200 "));
  const std::vector<std::string> rows = watcher->Rows();
  CheckRows(rows, GetParam().orders);
  const std::string who = GetParam().isBare ? " unknown_service:node db.pool "
                                            : "web1 shop/orders db.pool 4711 main slow insert 0 ";
  EXPECT_GE(Count(rows, who), 1u) << rows.front();
}

// `refused` and `dropped` have the same bytes twice: the first time there was no answer, or 503.
INSTANTIATE_TEST_SUITE_P(OfTheSdk, OtlpRecorded,
                         testing::Values(Recording{"plain", 6}, Recording{"packed", 6},
                                         Recording{"refused", 3}, Recording{"dropped", 3},
                                         Recording{"bare", 3, true}),
                         testing::PrintToStringParamName());

// The folder of the SDK, if one is named: ./dev check sdk installs it.
std::vector<std::string> InstalledSdk() {
  const char* const folder = getenv("QUOR_OTLP_SDK");
  return folder ? std::vector<std::string>{folder} : std::vector<std::string>{};
}

class OtlpSdk : public OtlpInFixture, public testing::WithParamInterface<std::string> {};

TEST_P(OtlpSdk, AllThatItSendsArrivesAlsoWhenTheServiceIsAwayForAMoment) {
  constexpr std::size_t kOrders = 300;
  BridgeProcess bridge;
  const std::string url = "http://127.0.0.1:" + std::to_string(bridge.Port());
  // The first requests are refused, and come again.
  const std::string words =
      "cd '" + GetParam() + "' && timeout 60 node orders.js " + url + " 300 --gzip 2>&1";
  FILE* const sdk = popen(words.c_str(), "r");
  ASSERT_NE(sdk, nullptr);
  EXPECT_TRUE(bridge.Says("is refused with 503")) << bridge.Log();
  StartQuord();
  const auto watcher = Watch(TracesOf(kOrders) + 1);
  std::string said;
  for (char piece[4096]; const std::size_t got = std::fread(piece, 1, sizeof piece, sdk);)
    said.append(piece, got);
  EXPECT_EQ(pclose(sdk), 0) << said;
  EXPECT_EQ(said, "");
  EXPECT_THAT(Exporter(bridge).Post("/v1/logs", LastLog()), StartsWith("HTTP/1.1 200 "));
  CheckRows(watcher->Rows(), kOrders);
}

INSTANTIATE_TEST_SUITE_P(Installed, OtlpSdk, testing::ValuesIn(InstalledSdk()));
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(OtlpSdk);

}  // namespace
