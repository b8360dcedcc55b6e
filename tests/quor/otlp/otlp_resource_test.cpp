#include <gmock/gmock.h>

#include "quor/otlp/otlp_messages.h"
#include "quor/otlp/otlp_tics.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// The process of a log whose resource has these attributes.
class Resources : public testing::Test {
 protected:
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  OtlpSource SourceOf(const Attributes& attributes, int second = 0) {
    LogMessage logs;
    for (const auto& [key, value] : attributes) AddText(logs.resource, key, value);
    logs.Add("x");
    mapper.Take(logs.message, ArrivalAt(second));
    return taken.all.back().source;
  }
  std::string ProcessOf(const Attributes& attributes, int second = 0) {
    return SourceOf(attributes, second).process;
  }

  TakenRecords taken;
  OtlpMapper mapper{taken};
};

}  // namespace

TEST_F(Resources, NameTheProcessByItsNumberBeforeItsInstance) {
  EXPECT_EQ(ProcessOf({{"service.instance.id", "i-7"}, {"process.pid", "12"}}), "12");
  EXPECT_EQ(ProcessOf({{"service.instance.id", "i-7"}}), "i-7");
  EXPECT_EQ(ProcessOf({{"service.instance.id", "i-8"}, {"process.pid", ""}}), "i-8");
}

TEST_F(Resources, WithoutNumberAndInstanceAreToldApartByWhatTheySay) {
  const std::string one = ProcessOf({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(one, ProcessOf({{"b", "2"}, {"a", "1"}}));
  EXPECT_NE(one, ProcessOf({{"a", "2"}, {"b", "1"}}));
  EXPECT_EQ(one.size(), 8u);
}

TEST_F(Resources, OfASecondInstanceWithTheSameNumberHaveItsNameToo) {
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}, {"service.instance.id", "red"}}), "1");
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}, {"service.instance.id", "blue"}}), "1.blue");
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}, {"service.instance.id", "red"}}), "1");
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}, {"service.instance.id", "blue"}}), "1.blue");
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}}), "1");
}

TEST_F(Resources, OfASecondInstanceKeepTheirNameWhenTheFirstHasEnded) {
  ProcessOf({{"process.pid", "1"}, {"service.instance.id", "red"}});
  ProcessOf({{"process.pid", "1"}, {"service.instance.id", "blue"}}, 300);
  mapper.Tick(std::chrono::seconds(600));
  EXPECT_THAT(taken.ended, ElementsAre(OtlpSource{"10.0.0.7", "unknown_service", "1"}));
  EXPECT_EQ(ProcessOf({{"process.pid", "1"}, {"service.instance.id", "blue"}}, 601), "1.blue");
}

TEST_F(Resources, OfTwoMachinesWithTheSameNumberAreTwoProcesses) {
  const auto one = SourceOf({{"host.name", "a"}, {"process.pid", "1"}});
  const auto two = SourceOf({{"host.name", "b"}, {"process.pid", "1"}});
  EXPECT_EQ(one.process, two.process);
  EXPECT_NE(one, two);
}

TEST_F(Resources, HaveNoSlashWithoutANamespace) {
  EXPECT_EQ(SourceOf({{"service.name", "shop"}}).application, "shop");
  EXPECT_EQ(SourceOf({{"service.namespace", "a"}}).application, "a/unknown_service");
  EXPECT_EQ(SourceOf({{"service.name", "unknown_service:node"}}).application,
            "unknown_service:node");
}

TEST_F(Resources, AreSaidOnceForEachProcess) {
  for (int i = 0; i < 3; ++i)
    SourceOf({{"process.pid", "1"}, {"telemetry.sdk.name", "x"}, {"os", "big one"}});
  EXPECT_THAT(taken.Texts(),
              ElementsAre("resource: telemetry.sdk.name=x os=\"big one\"", "x", "x", "x"));
  EXPECT_EQ(taken.all[0].component, "Otlp");
  EXPECT_EQ(taken.all[0].category, "Resource");
  EXPECT_EQ(taken.all[0].attributes, kAttributeInfo);
}

TEST_F(Resources, AreSaidAgainWhenTheyChangeButNotWithoutEnd) {
  for (int i = 0; i < 50; ++i) SourceOf({{"process.pid", "1"}, {"version", std::to_string(i)}});
  const auto texts = taken.Texts();
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "x"), 50);
  EXPECT_EQ(texts.size(), 58u);
}

TEST_F(Resources, ThatSayNothingElseAreNotSaid) {
  SourceOf({{"process.pid", "1"}, {"service.name", "s"}, {"host.name", "h"}});
  EXPECT_THAT(taken.Texts(), ElementsAre("x"));
}

TEST_F(Resources, AreForgottenWhenThereAreTooManyProcesses) {
  for (int i = 0; i < 4200; ++i) ProcessOf({{"process.pid", std::to_string(i)}}, i / 100);
  ASSERT_EQ(taken.ended.size(), 4200 - OtlpMapper::kProcessesMax);
  EXPECT_EQ(taken.ended.front().process, "0");
  EXPECT_EQ(taken.ended.back().process, "103");
}

TEST(OtlpTics, CountPicosecondsFromADayBeforeTheFirst) {
  OtlpTics tics;
  const std::uint64_t day = 86'400'000'000'000'000;
  EXPECT_EQ(tics.Of(kMidnight), day);
  EXPECT_EQ(tics.Of(kMidnight + 1), day + 1000);
  EXPECT_EQ(tics.Of(kMidnight - kSecondNs), day - 1'000'000'000'000);
}

TEST(OtlpTics, AreNoneForATimeThatIsFarFromTheOthers) {
  OtlpTics tics;
  const std::uint64_t first = tics.Of(kMidnight);
  EXPECT_EQ(tics.Of(1), 0u);
  EXPECT_EQ(tics.Of(kMidnight + kSecondNs), first + 1'000'000'000'000);
  EXPECT_EQ(tics.Of(UINT64_MAX), 0u);
  EXPECT_EQ(tics.Of(1), 0u);
  EXPECT_EQ(tics.Of(kMidnight), first);
}

TEST(OtlpTics, BeginAnewWhenTwoTimesTogetherLieBehindTheirBound) {
  OtlpTics tics;
  tics.Of(1);  // a clock that was not set yet
  EXPECT_EQ(tics.Of(kMidnight), 0u);
  const std::uint64_t anew = tics.Of(kMidnight + 1);
  EXPECT_NE(anew, 0u);
  EXPECT_EQ(tics.Of(kMidnight + 2), anew + 1000);
}

TEST(OtlpTics, LastForTwoHundredAndTwelveDays) {
  OtlpTics tics;
  const std::uint64_t first = tics.Of(kMidnight);
  const std::uint64_t days = 212 * 86'400 * kSecondNs;
  EXPECT_EQ(tics.Of(kMidnight + days) - first, days * 1000);
  EXPECT_EQ(tics.Of(kMidnight + days + 86'400 * kSecondNs), 0u);
}
