// A real server with a stream, messages in it, and "trc tail" of its address.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "apps/trc/trc_process.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/engine/jetstream/stream_setup.h"
#include "quor/envelope/envelope.h"
#include "support/nats_server.h"
#include "support/recording_engine_user.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

// Traces of one source, whose texts are "app N" with N = their serials.
class SentSource {
 public:
  SentSource(std::string machine, std::string app)
      : m_machine(std::move(machine)), m_app(std::move(app)) {}

  // The next so many traces, behind so many that were lost.
  Envelope Next(std::uint64_t traces, std::uint64_t lost = 0) {
    m_serial += lost;
    TrcImage image = TrcImage().Name(1, m_machine).Name(2, m_app).Name(7, "Main");
    for (std::uint64_t i = 0; i < traces; ++i)
      image.Trace({.text = m_app + " " + std::to_string(++m_serial),
                   .machine = 1,
                   .app = 2,
                   .component = 7});
    Envelope envelope{
        std::string(16, m_app.back()), m_machine, m_app, 7, m_serial, traces, lost, {}};
    const std::string& bytes = image.Bytes();
    if (traces > 0) envelope.traces.assign(bytes.begin(), bytes.end());
    return envelope;
  }
  MachineWord Word(bool ended = false) const {
    return {m_machine, {{std::string(16, m_app.back()), m_app, m_serial, ended}}};
  }
  const std::string& Machine() const { return m_machine; }
  const std::string& App() const { return m_app; }
  std::uint64_t Serial() const { return m_serial; }

 private:
  std::string m_machine, m_app;
  std::uint64_t m_serial = 0;
};

class BridgeRead : public ::testing::Test {
 protected:
  static constexpr char kStream[] = "QUOR1";

  void SetUp() override {
    ASSERT_EQ(m_server.Start(), "");
    MakeStream();
    std::string why;
    m_engine = JetStream::Make(Address(), kStream, m_user, &why);
    ASSERT_TRUE(m_engine) << why;
  }
  void TearDown() override { m_engine.reset(); }

  NatsAddress Address() const {
    NatsAddress address;
    address.servers = {m_server.Address()};
    return address;
  }
  void MakeStream(std::uint64_t mostOfSubject = 0) {
    std::string why;
    const auto setup = StreamSetup::Make(Address(), &why);
    ASSERT_TRUE(setup) << why;
    StreamPlan plan;
    plan.name = kStream;
    plan.subjects = {"quor1.>"};
    plan.replicas = 1;
    plan.maxOfSubject = mostOfSubject;
    const auto made = setup->MakeStream(plan, mostOfSubject > 0, std::chrono::seconds(20), &why);
    ASSERT_NE(made, StreamSetup::Made::Failed) << why;
    ASSERT_NE(made, StreamSetup::Made::Other) << why;
  }

  // Sent again until it is stored.
  void Store(const std::string& subject, const std::vector<std::uint8_t>& body) {
    const std::uint64_t token = ++m_published;
    const auto isStored = [this, token, before = m_user.Acks().size()] {
      for (const auto& [of, ack] : m_user.AcksFrom(before))
        if (of == token && ack.stored) return true;
      return false;
    };
    std::string why;
    for (int tries = 0; tries < 20; ++tries) {
      m_engine->Publish(subject, "id" + std::to_string(token), body, token, &why);
      if (m_user.Wait(isStored, std::chrono::seconds(1))) return;
    }
    FAIL() << "not stored: " << why;
  }
  void Send(const Envelope& envelope) {
    std::vector<std::uint8_t> body;
    std::string why;
    ASSERT_TRUE(WriteEnvelope(envelope, body, &why)) << why;
    Store(EnvelopeSubject(envelope.machine, envelope.app), body);
  }
  void Send(const MachineWord& word) {
    std::vector<std::uint8_t> body;
    std::string why;
    ASSERT_TRUE(WriteWord(word, body, &why)) << why;
    Store(WordSubject(word.machine), body);
  }

  std::string Text(const std::string& wishes = "since=start") const {
    return "nats://" + m_server.Address() + "/" + kStream + "?" + wishes;
  }
  // "trc tail" that prints only the texts.
  TrcStart Tail(const std::string& wishes, std::vector<std::string> more = {}) const {
    TrcStart start{{"tail", Text(wishes), "--columns", "Trace"}};
    start.arguments.insert(start.arguments.end(), more.begin(), more.end());
    return start;
  }
  static std::string Lines(const std::string& app, std::uint64_t from, std::uint64_t to) {
    std::string lines = from == 0 ? "Trace\n" : "";  // the title of the column
    while (from < to) lines += app + " " + std::to_string(++from) + "\n";
    return lines;
  }
  // The process that reads for this one.
  static pid_t ReaderOf(pid_t trc) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      std::string name, state;
      pid_t process = 0, parent = 0;
      std::ifstream(entry.path().string() + "/stat") >> process >> name >> state >> parent;
      if (parent == trc && name == "(quor-bridge)" && state != "Z") return process;
    }
    return 0;
  }

  TempDir m_folder;
  NatsServer m_server{m_folder.Path()};
  RecordingEngineUser m_user;
  std::unique_ptr<JetStream> m_engine;
  std::uint64_t m_published = 0;
};
