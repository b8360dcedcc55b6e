// A real service, a real server of an engine and quor-bridge between them, and what the stream
// holds afterwards.
#pragma once

#include <quor/quor.hpp>

#include <map>
#include <set>

#include "apps/quord/quord_process.h"
#include "base/mapped_file.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/envelope/envelope.h"
#include "quor/relay/source_ledger.h"
#include "records/trc_walk.h"
#include "support/nats_server.h"
#include "support/recording_engine_user.h"

// Its words, and a child with its output in a file.
class BridgeRun {
 public:
  BridgeRun(const std::string& log, std::vector<std::string> words) : m_log(log) {
    const char* const program = getenv("QUOR_BRIDGE");
    words.insert(words.begin(), program ? program : "no-program");
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    m_pid = fork();
    if (m_pid != 0) return;
    const int to = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(to, STDOUT_FILENO);
    dup2(to, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  ~BridgeRun() {
    if (m_pid > 0) End(SIGKILL);
  }
  BridgeRun(const BridgeRun&) = delete;

  int End(int number) {
    kill(m_pid, number);
    return Wait();
  }
  int Wait() { return WaitForExit(std::exchange(m_pid, 0)); }
  void Signal(int number) const { kill(m_pid, number); }
  std::string Log() const { return ReadIfThere(m_log); }
  bool Says(const std::string& words) const {
    return WaitFor([&] { return Log().find(words) != std::string::npos; });
  }
  unsigned Times(const std::string& words) const {
    const std::string log = Log();
    unsigned times = 0;
    for (std::size_t at = 0; (at = log.find(words, at)) != log.npos; ++at) ++times;
    return times;
  }

 private:
  const std::string m_log;
  pid_t m_pid = 0;
};

// What the messages of a stream account for.
struct StreamContent {
  std::map<std::string, SourceLedger> sources;
  std::set<std::uint64_t> numbers;  // of the traces that a reader would give out
  std::uint64_t again = 0, messages = 0, words = 0;
  std::string damage;

  std::uint64_t Delivered() const { return Sum(&SourceCounts::delivered); }
  std::uint64_t Lost() const { return Sum(&SourceCounts::lost); }
  std::uint64_t High() const {
    std::uint64_t high = 0;
    for (const auto& [id, ledger] : sources) high += ledger.High();
    return high;
  }
  // Holes are losses: nothing more comes.
  void GiveUpHoles() {
    for (auto& [id, ledger] : sources)
      while (ledger.HasHole()) ledger.GiveUpFirstHole();
  }

 private:
  std::uint64_t Sum(std::uint64_t SourceCounts::*which) const {
    std::uint64_t sum = 0;
    for (const auto& [id, ledger] : sources) sum += ledger.Counts().*which;
    return sum;
  }
};

class PublishFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(server.Start(), "");
    ASSERT_EQ(Init({}), 0);
  }
  int Init(std::vector<std::string> more) {
    std::vector<std::string> words = {
        "init", "--engine", server.Address(), "--replicas", "1", "--max-bytes", "256M"};
    words.insert(words.end(), more.begin(), more.end());
    BridgeRun run(InitLog(), words);
    return run.Wait();
  }
  std::string InitLog() const { return folder.File("init.log"); }
  std::string BridgeLog() const { return folder.File("bridge.log"); }
  std::unique_ptr<BridgeRun> Publish() {
    return std::make_unique<BridgeRun>(
        BridgeLog(), std::vector<std::string>{"publish", "--engine", server.Address(), "--socket",
                                              quord.SocketPath(), "--state", folder.File("state")});
  }
  NatsAddress Address() const {
    NatsAddress address;
    address.servers = {server.Address()};
    address.name = "test";
    return address;
  }

  // Everything that is in the stream now.
  StreamContent Content() {
    StreamContent content;
    RecordingEngineUser user;
    std::string why;
    const auto engine = JetStream::Make(Address(), "QUOR1", user, &why);
    const auto reader = engine ? engine->Read("quor1.>", {}, &why) : nullptr;
    if (!reader) content.damage = why;
    if (!reader) return content;
    std::vector<EngineMessage> messages;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    bool some = true;
    while (some && std::chrono::steady_clock::now() < end) {
      const auto state = reader->Next(std::chrono::seconds(1), messages, &why);
      some = state != EngineReader::State::Quiet;
      for (const EngineMessage& message : messages) Take(message, content);
    }
    return content;
  }

  TempDir folder;
  NatsServer server{folder.Path()};
  QuordProcess quord;

 private:
  // The texts of traces are numbers.
  struct TextNumbers {
    StreamContent& content;
    void OnName(NameId, std::string_view) const {}
    void OnTrace(const std::uint8_t* record) const {
      const RawTrace trace(record);
      if (trace.SequenceNumber() == kNoSequenceNumber) return;
      const auto number = std::stoull(std::string(trace.Text()));
      content.again += content.numbers.insert(number).second ? 0 : 1;
    }
    void OnUnknownTag(std::uint64_t) const { content.damage = "an unknown tag"; }
    static bool OnProgress(std::uint64_t) { return true; }
  };
  static void Take(const EngineMessage& message, StreamContent& content) {
    std::string machine, app;
    bool word = false;
    if (!ReadSubject(message.subject, machine, app, word)) content.damage = message.subject;
    ++(word ? content.words : content.messages);
    if (word) return TakeWord(message, content);
    Envelope envelope;
    std::string why;
    if (!ReadEnvelope(message.body, envelope, &why)) content.damage = why;
    auto [at, isNew] = content.sources.try_emplace(envelope.instance);
    const auto verdict = at->second.Take(envelope.serial, envelope.delivered, envelope.lost);
    if (verdict == SourceLedger::Verdict::Torn) content.damage = "torn";
    if (verdict != SourceLedger::Verdict::Deliver) return;
    const std::size_t bytes = envelope.traces.size();
    envelope.traces.resize(bytes + MappedFile::kGuardBytes);
    if (bytes > 0) WalkTrc(Bytes(envelope.traces.data(), bytes), TextNumbers{content});
  }
  static void TakeWord(const EngineMessage& message, StreamContent& content) {
    MachineWord word;
    std::string why;
    if (!ReadWord(message.body, word, &why)) content.damage = why;
    for (const SourceWord& source : word.sources)
      content.sources[source.instance].Reach(source.serial);
  }
};
