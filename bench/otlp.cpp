// Logs and spans of OpenTelemetry made into traces, compared with a loop that only parses the same
// messages, on one core: records a second of parse and map, which quor-bridge otlp-in and imports
// do, and of parse, map and the bytes for the service.
#include <google/protobuf/arena.h>

#include <cstdlib>
#include <map>
#include <memory>

#include "bench/ratio.h"
#include "quor/otlp/feed/feed_process.h"
#include "quor/otlp/otlp_mapper.h"

namespace {

// As the SDKs send them: 512 records a message.
constexpr unsigned kRecords = 512, kMessages = 40;
constexpr int kTurns = 25;
constexpr std::uint64_t kBegan = 1'795'478'400'000'000'000, kMs = 1'000'000;

template <class To>
void AddText(To& to, const char* key, const std::string& text) {
  auto* const attribute = to.add_attributes();
  attribute->set_key(key);
  attribute->mutable_value()->set_string_value(text);
}
template <class To>
void AddNumber(To& to, const char* key, std::int64_t number) {
  auto* const attribute = to.add_attributes();
  attribute->set_key(key);
  attribute->mutable_value()->set_int_value(number);
}

void Describe(quor::otlp::Resource& resource) {
  AddText(resource, "service.name", "orders");
  AddText(resource, "service.namespace", "shop");
  AddText(resource, "host.name", "web1");
  AddNumber(resource, "process.pid", 4711);
  AddText(resource, "telemetry.sdk.language", "nodejs");
}

std::string Logs(unsigned message) {
  quor::otlp::ExportLogs logs;
  auto& resourceLogs = *logs.add_resource_logs();
  Describe(*resourceLogs.mutable_resource());
  auto& scopeLogs = *resourceLogs.add_scope_logs();
  scopeLogs.mutable_scope()->set_name("db.pool");
  for (unsigned i = 0; i < kRecords; ++i) {
    auto& log = *scopeLogs.add_log_records();
    log.set_time_unix_nano(kBegan + (message * kRecords + i) * kMs);
    log.set_observed_time_unix_nano(kBegan + (message * kRecords + i) * kMs);
    log.set_severity_number(i % 16 == 0 ? 13 : 9);
    log.set_severity_text(i % 16 == 0 ? "WARN" : "INFO");
    log.mutable_body()->set_string_value("order " + std::to_string(i) + " is stored in 12 ms");
    AddText(log, "code.file.path", "/srv/orders/src/pool.js");
    AddNumber(log, "code.line.number", 40 + i % 8);
    AddText(log, "thread.name", "worker " + std::to_string(i % 4));
    AddText(log, "customer", "C" + std::to_string(i % 100));
    AddNumber(log, "rows", i % 50);
    log.set_trace_id(std::string(16, static_cast<char>('a' + i % 20)));
    log.set_span_id(std::string(8, static_cast<char>('a' + i % 20)));
  }
  return logs.SerializeAsString();
}

// Traces of four spans, the children first.
std::string Spans(unsigned message) {
  quor::otlp::ExportSpans spans;
  auto& resourceSpans = *spans.add_resource_spans();
  Describe(*resourceSpans.mutable_resource());
  auto& scopeSpans = *resourceSpans.add_scope_spans();
  scopeSpans.mutable_scope()->set_name("web");
  for (unsigned i = 0; i < kRecords; ++i) {
    const unsigned trace = i / 4, child = i % 4;
    const std::string number = std::to_string(message * kRecords + trace);
    auto& span = *scopeSpans.add_spans();
    span.set_trace_id((number + "................").substr(0, 16));
    span.set_span_id(std::to_string(child) + (number + "........").substr(0, 7));
    if (child != 3) span.set_parent_span_id("3" + (number + "........").substr(0, 7));
    span.set_name(child == 3 ? "POST /orders" : "insert");
    span.set_kind(child == 3 ? 2 : 1);
    const std::uint64_t start = kBegan + (message * kRecords + trace * 2) * kMs;
    span.set_start_time_unix_nano(child == 3 ? start : start + (1 + child) * kMs / 8);
    span.set_end_time_unix_nano(child == 3 ? start + kMs : start + (2 + child) * kMs / 8 - 1);
    AddNumber(span, "http.response.status_code", 200);
    AddText(span, "url.path", "/orders/" + std::to_string(i));
  }
  return spans.SerializeAsString();
}

class Nowhere final : public OtlpTaker {
 public:
  void OnRecord(const OtlpSource&, const OtlpRecord& record) override {
    bytes += record.text.size() + record.thread.size();
  }
  void OnEnd(const OtlpSource&) override {}
  std::uint64_t bytes = 0;
};

// To a hub whose stream drops what it gets.
class IntoHub final : public OtlpTaker, private HubStream {
 public:
  IntoHub() { m_hub.Add(*this); }
  ~IntoHub() override {
    m_processes.clear();
    m_hub.Remove(*this);
  }
  void OnRecord(const OtlpSource& source, const OtlpRecord& record) override {
    auto& process = m_processes[&source];
    if (!process) process = std::make_unique<FeedProcess>(m_hub, source);
    process->Take(record);
  }
  void OnEnd(const OtlpSource& source) override { m_processes.erase(&source); }
  void HandOver() {
    m_hub.Seal();
    m_hub.Deliver();
  }

 private:
  void OnBatch(const SharedBatch&) override {}
  Hub m_hub{HubBatches::OfOneSource};
  std::map<const OtlpSource*, std::unique_ptr<FeedProcess>> m_processes;
};

template <class Message, class Then>
void ForEach(const std::vector<std::string>& bodies, Then then) {
  for (const std::string& body : bodies) {
    google::protobuf::Arena arena;
    auto* const message = google::protobuf::Arena::CreateMessage<Message>(&arena);
    if (!message->ParseFromString(body)) std::abort();
    then(*message);
  }
}

template <class Message, class Taker>
void Print(const char* what, double target, const std::vector<std::string>& bodies) {
  std::uint64_t records = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { ForEach<Message>(bodies, [](const Message&) {}); },
      [&] {
        Taker taker;
        OtlpMapper mapper(taker);
        ForEach<Message>(bodies, [&](const Message& message) {
          mapper.Take(message, {"peer", kBegan, std::chrono::seconds(1)});
          if constexpr (requires { taker.HandOver(); }) taker.HandOver();
        });
        mapper.Flush();
        records = mapper.Counts().records;
      });
  if (records < kRecords * kMessages) std::abort();
  constexpr double kNsEach = 1e9 / (kRecords * kMessages);
  PrintRow(what, measured.seconds * kNsEach, "ns/record", measured.floorSeconds * kNsEach,
           measured.ratio, target);
}

}  // namespace

int main() {
  std::vector<std::string> logs, spans;
  for (unsigned message = 0; message < kMessages; ++message) {
    logs.push_back(Logs(message));
    spans.push_back(Spans(message));
  }
  // 0.6 as many records a second as the floor.
  constexpr double kMapped = 1.67, kForTheService = 2.5;
  Print<quor::otlp::ExportLogs, Nowhere>("otlp, logs to traces, to a parse", kMapped, logs);
  Print<quor::otlp::ExportLogs, IntoHub>("otlp, logs to frames, to a parse", kForTheService, logs);
  // A span is two traces.
  Print<quor::otlp::ExportSpans, Nowhere>("otlp, spans to traces, to a parse", 2 * kMapped, spans);
  Print<quor::otlp::ExportSpans, IntoHub>("otlp, spans to frames, to a parse", 2 * kForTheService,
                                          spans);
}
