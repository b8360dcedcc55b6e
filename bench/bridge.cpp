// The engine's stream through the port, compared with the engine's own client: the same messages to
// the same server, which runs on this machine for as long as this does.
#include <nats/nats.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "bench/ratio.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/engine/jetstream/stream_setup.h"
#include "tests/support/nats_server.h"

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kRunBytes = 48u << 20;
constexpr std::size_t kWindow = 64, kWindowBytes = 4u << 20;  // of a publisher
constexpr int kTurns = 5;
// Its own client's throughput times 0.7, at least.
constexpr double kTarget = 1 / 0.7;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "bench_bridge: %s\n", what.c_str());
  std::exit(2);
}
void Must(natsStatus status, const char* what) {
  if (status != NATS_OK) Fail(std::string(what) + ": " + natsStatus_GetText(status));
}

std::vector<std::uint8_t> BodyOf(std::size_t bytes) {
  std::mt19937 random(7);
  std::vector<std::uint8_t> body(bytes);
  for (std::uint8_t& byte : body) byte = static_cast<std::uint8_t>(random());
  return body;
}

// Ids are never used again: a server drops what it has had.
std::string NextId() {
  static std::uint64_t number = 0;
  return "bench:" + std::to_string(++number);
}

class Acks final : public EngineUser {
 public:
  void WaitFor(std::uint64_t acks) {
    std::unique_lock lock(m_mutex);
    if (!m_came.wait_for(lock, 30s, [&] { return m_acks >= acks || !m_why.empty(); }))
      Fail("the server does not answer");
    if (!m_why.empty()) Fail(m_why);
  }

 private:
  void OnAck(std::uint64_t, const EngineAck& ack) override {
    const std::lock_guard lock(m_mutex);
    if (!ack.stored || ack.duplicate) m_why = "it was not stored: " + ack.why;
    ++m_acks;
    m_came.notify_one();
  }
  void OnRefused(const std::string& what) override { Note(what); }
  void OnDown(const std::string& why) override { Note(why); }
  void OnUp(const std::string&) override {}
  void Note(const std::string& why) {
    const std::lock_guard lock(m_mutex);
    m_why = why;
    m_came.notify_one();
  }
  std::mutex m_mutex;
  std::condition_variable m_came;
  std::uint64_t m_acks = 0;
  std::string m_why;
};

// One server with one stream.
class Stored {
 public:
  explicit Stored(const std::string& folder) : m_server(folder) {
    if (const std::string why = m_server.Start(); !why.empty()) Fail(why);
    NatsAddress address;
    address.servers = {m_server.Address()};
    std::string why;
    const auto setup = StreamSetup::Make(address, &why);
    StreamPlan plan;
    plan.name = "BENCH";
    plan.subjects = {"b.>"};
    plan.replicas = 1;
    plan.maxBytes = 4 * kRunBytes;
    if (!setup || setup->MakeStream(plan, false, 20s, &why) != StreamSetup::Made::New) Fail(why);
    m_engine = JetStream::Make(address, plan.name, m_acks, &why);
    if (!m_engine) Fail(why);
    Must(natsConnection_ConnectTo(&m_connection, ("nats://" + m_server.Address()).c_str()),
         "its own client does not connect");
    jsOptions options;
    jsOptions_Init(&options);
    options.PublishAsync.MaxPending = kWindow;
    Must(natsConnection_JetStream(&m_context, m_connection, &options), "no context");
  }
  ~Stored() {
    m_engine.reset();
    jsCtx_Destroy(m_context);
    natsConnection_Destroy(m_connection);
  }
  Stored(const Stored&) = delete;

  void Publish(const std::vector<std::uint8_t>& body) {
    const std::size_t window =
        std::max<std::size_t>(1, std::min(kWindow, kWindowBytes / body.size()));
    for (std::size_t i = 0; i < kRunBytes / body.size(); ++i) {
      if (m_sent - m_acked >= window) m_acks.WaitFor(m_acked = m_sent - window + 1);
      std::string why;
      if (!m_engine->Publish("b.machine.app", NextId(), body, ++m_sent, &why)) Fail(why);
    }
    m_acks.WaitFor(m_acked = m_sent);
  }
  void PublishByItsClient(const std::vector<std::uint8_t>& body) {
    for (std::size_t i = 0; i < kRunBytes / body.size(); ++i) {
      jsPubOptions options;
      jsPubOptions_Init(&options);
      const std::string id = NextId();
      options.MsgId = id.c_str();
      Must(js_PublishAsync(m_context, "b.machine.app", body.data(), static_cast<int>(body.size()),
                           &options),
           "its own client cannot publish");
    }
    jsPubOptions options;
    jsPubOptions_Init(&options);
    options.MaxWait = 30'000;
    Must(js_PublishAsyncComplete(m_context, &options), "not all was stored");
  }

  // The last run's messages of the stream, from the same place.
  void Read(std::uint64_t from, std::uint64_t messages) {
    EngineStart start;
    start.at = EngineStart::At::Sequence;
    start.sequence = from;
    std::string why;
    const auto reader = m_engine->Read("b.>", start, &why);
    if (!reader) Fail(why);
    std::vector<EngineMessage> got;
    for (std::uint64_t read = 0; read < messages; read += got.size())
      if (reader->Next(10s, got, &why) != EngineReader::State::Messages) Fail("reading: " + why);
  }
  void ReadByItsClient(std::uint64_t from, std::uint64_t messages) {
    jsSubOptions options;
    jsSubOptions_Init(&options);
    options.Ordered = true;
    options.Config.DeliverPolicy = js_DeliverByStartSequence;
    options.Config.OptStartSeq = from;
    natsSubscription* subscription = nullptr;
    jsErrCode error{};
    Must(js_SubscribeSync(&subscription, m_context, "b.>", nullptr, &options, &error),
         "its own client cannot read");
    for (std::uint64_t read = 0; read < messages; ++read) {
      natsMsg* message = nullptr;
      Must(natsSubscription_NextMsg(&message, subscription, 10'000), "its own client waits");
      // As a reader must have it: outside the library's memory.
      const char* const data = natsMsg_GetData(message);
      m_copy.assign(data, data + natsMsg_GetDataLength(message));
      natsMsg_Destroy(message);
    }
    natsSubscription_Destroy(subscription);
  }
  std::uint64_t LastSequence() {
    jsStreamInfo* info = nullptr;
    jsErrCode error{};
    Must(js_GetStreamInfo(&info, m_context, "BENCH", nullptr, &error), "no stream");
    const std::uint64_t last = info->State.LastSeq;
    jsStreamInfo_Destroy(info);
    return last;
  }

 private:
  NatsServer m_server;
  Acks m_acks;
  std::unique_ptr<JetStream> m_engine;
  natsConnection* m_connection = nullptr;
  jsCtx* m_context = nullptr;
  std::vector<char> m_copy;
  std::uint64_t m_sent = 0, m_acked = 0;
};

void Row(const std::string& what, const Measured& measured) {
  constexpr double kMegabytes = kRunBytes / 1e6;
  PrintRow(what, kMegabytes / measured.seconds, "MB/s", kMegabytes / measured.floorSeconds,
           measured.ratio, kTarget);
}

void MeasureAll(Stored& stored, std::size_t bytes, const std::string& of) {
  const std::vector<std::uint8_t> body = BodyOf(bytes);
  Row("publish, messages of " + of,
      MeasureBeside(
          kTurns, [&] { stored.PublishByItsClient(body); }, [&] { stored.Publish(body); }));
  const std::uint64_t messages = kRunBytes / body.size();
  const std::uint64_t from = stored.LastSequence() - messages + 1;
  Row("read, messages of " + of, MeasureBeside(
                                     kTurns, [&] { stored.ReadByItsClient(from, messages); },
                                     [&] { stored.Read(from, messages); }));
}

}  // namespace

int main() {
  const std::string folder =
      std::filesystem::temp_directory_path() / ("bench_bridge." + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  {
    Stored stored(folder);
    MeasureAll(stored, 13'400, "13.4 kB");
    MeasureAll(stored, 64 * 1024, "64 KiB");
  }
  nats_Close();
  std::filesystem::remove_all(folder);
  return 0;
}
