// trc export --format otlp: lines of JSON that a collector reads from a file.
#include <gmock/gmock.h>

#include <map>
#include <set>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

constexpr std::uint64_t kMillisecond = 1'000'000'000;  // in picoseconds

class TrcExportOtlp : public testing::Test {
 protected:
  // Names: 1 web1, 2 orders, 3 4711, 4 Shop, 5 Order, 6 shop.cpp, 7 Quor, 8 Loss, 9 main.
  static TrcImage Named() {
    TrcImage image;
    NameId id = 0;
    for (const char* const name :
         {"web1", "orders", "4711 alice", "Shop", "Order", "shop.cpp", "Quor", "Loss", "main"})
      image.Name(++id, name);
    return image;
  }
  static TraceFields Fields(const std::string& text, unsigned ms) {
    return {.text = text,
            .machine = 1,
            .app = 2,
            .component = 4,
            .category = 5,
            .time = PackTime(9, 41, 7, ms),
            .tic = 5'000 * kMillisecond + ms * kMillisecond,
            .pid = 3,
            .tid = 9,
            .file = 6,
            .line = 17};
  }
  std::string Export(const TrcImage& image, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments = {"export", image.WriteTo(m_folder.File("in.trc")), "-",
                                          "--format", "otlp"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
  }
  static std::map<std::string, json> AttributesOf(const json& message) {
    std::map<std::string, json> found;
    for (const json& pair : message.value("attributes", json::array()))
      found[pair.at("key").get<std::string>()] = pair.at("value");
    return found;
  }
  // Of all lines, with their scope as "scope".
  static std::vector<json> Messages(const std::string& text, const char* resources,
                                    const char* scopes, const char* messages) {
    std::vector<json> found;
    for (const json& line : JsonLinesOf(text))
      for (const json& resource : line.value(resources, json::array()))
        for (const json& scope : resource.at(scopes))
          for (json message : scope.at(messages)) {
            message["scope"] = scope.at("scope").at("name");
            message["resource"] = resource.at("resource");
            found.push_back(std::move(message));
          }
    return found;
  }
  static std::vector<json> Logs(const std::string& text) {
    return Messages(text, "resourceLogs", "scopeLogs", "logRecords");
  }
  static std::vector<json> Spans(const std::string& text) {
    return Messages(text, "resourceSpans", "scopeSpans", "spans");
  }
  const TempDir m_folder;
};

TEST_F(TrcExportOtlp, ATraceIsALogWithAllThatItSays) {
  TraceFields fields = Fields("say \"hi\"\n\xc3\xa9", 123);
  fields.attributes = kAttributeWarn;
  fields.stack = "f\ng";
  const std::string text = Export(Named().Trace(fields));
  ASSERT_EQ(LinesOf(text).size(), 1u) << text;
  const json log = Logs(text).at(0);
  EXPECT_EQ(log.at("body"), json::parse(R"({"stringValue":"say \"hi\"\né"})"));
  EXPECT_EQ(log.at("timeUnixNano"), "1795254067123000000");
  EXPECT_EQ(log.at("severityNumber"), 13);
  EXPECT_EQ(log.at("severityText"), "WARN");
  EXPECT_EQ(log.at("eventName"), "Order");
  EXPECT_EQ(log.at("scope"), "Shop");
  const auto attributes = AttributesOf(log);
  EXPECT_EQ(attributes.at("thread.name").at("stringValue"), "main");
  EXPECT_EQ(attributes.at("code.line.number").at("intValue"), "17");
  EXPECT_EQ(attributes.at("quor.serial").at("intValue"), "1");
  EXPECT_EQ(attributes.at("exception.stacktrace").at("stringValue"), "f\ng");
  const auto resource = AttributesOf(log.at("resource"));
  EXPECT_EQ(resource.at("service.name").at("stringValue"), "orders");
  EXPECT_EQ(resource.at("host.name").at("stringValue"), "web1");
  EXPECT_EQ(resource.at("process.pid").at("intValue"), "4711");
  EXPECT_THAT(resource.at("service.instance.id").at("stringValue").get<std::string>(),
              MatchesRegex("[0-9a-f]{32}"));
}

TEST_F(TrcExportOtlp, BlocksAreSpansInEachOther) {
  TrcImage image = Named();
  image.Trace(Fields("Begin: outer", 100)).Trace(Fields("Begin: inner", 110));
  TraceFields error = Fields("no route", 115);
  error.attributes = kAttributeError;
  image.Trace(error).Trace(Fields("End: inner", 120)).Trace(Fields("End: outer", 150));
  image.Trace(Fields("Begin: cut off", 160));
  const std::string text = Export(image);
  std::map<std::string, json> spans;
  for (const json& span : Spans(text)) spans[span.at("name").get<std::string>()] = span;
  ASSERT_EQ(spans.size(), 3u) << text;
  const json &outer = spans["outer"], &inner = spans["inner"];
  EXPECT_EQ(inner.at("traceId"), outer.at("traceId"));
  EXPECT_EQ(inner.at("parentSpanId"), outer.at("spanId"));
  EXPECT_FALSE(outer.contains("parentSpanId"));
  EXPECT_THAT(outer.at("traceId").get<std::string>(), MatchesRegex("[0-9a-f]{32}"));
  EXPECT_THAT(outer.at("spanId").get<std::string>(), MatchesRegex("[0-9a-f]{16}"));
  EXPECT_EQ(std::stoull(outer.at("endTimeUnixNano").get<std::string>()) -
                std::stoull(outer.at("startTimeUnixNano").get<std::string>()),
            50'000'000u);
  EXPECT_EQ(inner.at("status").at("code"), 2);
  EXPECT_TRUE(AttributesOf(spans["cut off"]).contains("quor.unfinished"));
  const std::vector<json> logs = Logs(text);
  ASSERT_EQ(logs.size(), 1u);
  EXPECT_EQ(logs[0].at("spanId"), inner.at("spanId"));
}

TEST_F(TrcExportOtlp, EachTraceIsInOneMessageAndLossesAreReported) {
  TrcImage image = Named();
  for (unsigned i = 0; i < 1500; ++i)
    image.Trace(Fields(i % 3 == 0   ? "Begin: b"
                       : i % 3 == 1 ? "log " + std::to_string(i)
                                    : "End: b",
                       i % 1000));
  image.Trace(Fields("Begin: open", 999));
  TraceFields report = Fields("7 traces lost: the ring was full", 999);
  report.component = 7;
  report.category = 8;
  report.count = kNoSequenceNumber;
  image.Trace(report).Trace(Fields("End: open", 999));
  const std::string text = Export(image);
  EXPECT_GE(LinesOf(text).size(), 2u);
  std::uint64_t sum = 0, lost = 0;
  std::set<std::string> ids;
  for (const json& span : Spans(text)) {
    EXPECT_TRUE(ids.insert(span.at("spanId").get<std::string>()).second);
    sum += AttributesOf(span).contains("quor.unfinished") ? 1 : 2;
  }
  for (const json& log : Logs(text)) {
    const auto attributes = AttributesOf(log);
    if (attributes.contains("quor.lost"))
      lost += std::stoull(attributes.at("quor.lost").at("intValue").get<std::string>());
    else
      ++sum;
  }
  EXPECT_EQ(sum, 1502u);
  EXPECT_EQ(lost, 7u);
}

TEST_F(TrcExportOtlp, TheIdsOfATraceAreTheSameWithAFilter) {
  TrcImage image = Named();
  image.Trace(Fields("first", 1)).Trace(Fields("Begin: b", 2)).Trace(Fields("End: b", 3));
  const json all = Spans(Export(image)).at(0),
             some = Spans(Export(image, {"--where", "text ~ \"b\""})).at(0);
  EXPECT_EQ(all.at("spanId"), some.at("spanId"));
  EXPECT_EQ(all.at("traceId"), some.at("traceId"));
  EXPECT_EQ(all.at("resource"), some.at("resource"));
}

TEST_F(TrcExportOtlp, TextsThatAreNotUtf8AreMendedAndAnEmptyFileHasNoLine) {
  const std::string text = Export(Named().Trace(Fields("a\xff\x01z", 1)));
  EXPECT_THAT(Logs(text).at(0).at("body").at("stringValue").get<std::string>(),
              testing::AllOf(testing::StartsWith("a"), testing::EndsWith("z")));
  EXPECT_EQ(Export(Named()), "");
}

TEST_F(TrcExportOtlp, ColumnsAreRefused) {
  for (const std::string option : {"--hidden", "--columns=Trace"}) {
    const TrcRun run = RunTrc({"export", "a.trc", "-", "--format", "otlp", option});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("otlp has no columns"));
  }
}

}  // namespace
