// One server with the stream S1 and the bucket b1.
#pragma once

#include <gtest/gtest.h>

#include "quor/engine/jetstream/jetstream.h"
#include "quor/engine/jetstream/stream_setup.h"
#include "support/engine_contract.h"
#include "support/nats_server.h"
#include "support/temp_dir.h"

class JetStreamFixture : public ::testing::Test {
 protected:
  static constexpr std::chrono::milliseconds kWhile{20'000};

  void SetUp() override {
    ASSERT_EQ(m_server.Start(), "");
    MakeStream();
    std::string why;
    const auto setup = StreamSetup::Make(Address(), &why);
    ASSERT_TRUE(setup) << why;
    ASSERT_EQ(setup->MakeBucket(kContractBucket, 1, false, kWhile, &why), StreamSetup::Made::New)
        << why;
  }

  NatsAddress Address() const {
    NatsAddress address;
    address.servers = {m_server.Address()};
    address.name = "test";
    return address;
  }

  static StreamPlan Plan() {
    StreamPlan plan;
    plan.name = kContractStream;
    plan.subjects = {"t.>"};
    plan.replicas = 1;
    return plan;
  }

  void MakeStream(const StreamPlan& plan = Plan()) {
    std::string why;
    const auto setup = StreamSetup::Make(Address(), &why);
    ASSERT_TRUE(setup) << why;
    ASSERT_EQ(setup->MakeStream(plan, false, kWhile, &why), StreamSetup::Made::New) << why;
  }

  // No class of the program does that.
  void DeleteStream() {
    std::string why;
    const auto ignore = [](const std::string&) {};
    const auto link = NatsLink::Make(Address(), {ignore, ignore, ignore}, &why);
    ASSERT_TRUE(link) << why;
    const auto asker = NatsAsker::Make(
        *link, [](std::uint64_t, const BusMessage&) {}, &why);
    ASSERT_TRUE(asker) << why;
    const std::string subject = std::string("$JS.API.STREAM.DELETE.") + kContractStream;
    ASSERT_TRUE(asker->Ask(subject, {}, kWhile, nullptr, &why)) << why;
  }

  std::unique_ptr<JetStream> MakeJetStream(RecordingEngineUser& user) {
    std::string why;
    auto engine = JetStream::Make(Address(), kContractStream, user, &why);
    EXPECT_TRUE(engine) << why;
    return engine;
  }

  TempDir m_folder;
  NatsServer m_server{m_folder.Path()};
};
