// Settings that are kept in the cluster, in force in a real application.
#include "publish_fixture.h"
#include "quor/cluster/settings_desk.h"
#include "quor/protocol/machine.h"

namespace {

using namespace quor::wire;

QUOR_POINT(settled_point, "Net", "Settled");

// Reports the settings of its trace, at first and when they change, until it is killed.
std::unique_ptr<TracedChild> Settled() {
  return std::make_unique<TracedChild>([](TracedChild& self) {
    quor_application("settled");
    QUOR_TRACE_INFO(settled_point, "here");
    if (quor_flush(20000) != 1) return 1;
    for (std::uint32_t before = ~0u;; poll(nullptr, 0, 5)) {
      const std::uint32_t now = __atomic_load_n(&settled_point.settings, __ATOMIC_RELAXED);
      if (std::exchange(before, now) != now) self.Report(now);
    }
    return 0;
  });
}

class ClusterEditor {
 public:
  ClusterEditor(const NatsAddress& address, const std::string& who) {
    std::string why;
    m_engine = JetStream::Make(address, "QUOR1", m_user, &why);
    EXPECT_TRUE(m_engine) << why;
    m_desk =
        std::make_unique<SettingsDesk>(*m_engine, LocalHostName(), who, std::chrono::seconds(5));
  }
  // "" when it is open, else why not.
  std::string Open() {
    Request request;
    request.mutable_open_app()->set_name("settled");
    const Response response = m_desk->Answer(request);
    if (response.error() != ERROR_NONE) return response.text();
    for (const auto& component : response.app().components())
      for (const auto& category : component.categories()) m_trace = category.trace_id();
    return response.app().components_size() == 1 ? "" : "it has no traces";
  }
  Response Set(std::uint32_t settings) {
    Request request;
    request.mutable_submit()->set_app("settled");
    auto& setting = *request.mutable_submit()->add_settings();
    setting.set_trace_id(m_trace);
    setting.set_settings(settings);
    return m_desk->Answer(request);
  }

 private:
  RecordingEngineUser m_user;
  std::unique_ptr<JetStream> m_engine;
  std::unique_ptr<SettingsDesk> m_desk;
  std::uint32_t m_trace = 0;
};

using PublishingSettings = PublishFixture;

TEST_F(PublishingSettings, AreInForceInTheApplicationAlsoAfterServiceAndBridgeWereEnded) {
  quord.Start();
  auto bridge = Publish();
  ASSERT_TRUE(bridge->Says("begins a stream"));
  const auto app = Settled();
  const auto first = app->Reported();
  EXPECT_TRUE(first & QUOR_INFO) << first;
  ClusterEditor alice(Address(), "alice");
  ASSERT_TRUE(WaitFor([&] { return alice.Open().empty(); })) << alice.Open();
  EXPECT_EQ(alice.Set(QUOR_ERROR).text(), "");
  EXPECT_EQ(app->Reported(), QUOR_ERROR);
  EXPECT_EQ(quord.Stop(), 0);
  EXPECT_TRUE(bridge->Says("the trace service is away"));
  quord.Start();
  EXPECT_TRUE(bridge->Says("the trace service is back"));
  // Traces and settings have a connection each: that of the settings may be back a little later.
  // What is stored until then gets in force all the same.
  const std::string answer = alice.Set(QUOR_ERROR | QUOR_WARN).text();
  EXPECT_TRUE(answer.empty() || answer.find("are kept") != std::string::npos) << answer;
  EXPECT_EQ(app->Reported(), std::uint64_t{QUOR_ERROR | QUOR_WARN}) << bridge->Log();
  bridge->End(SIGKILL);
  // It is stored, for a machine that is away.
  alice.Set(QUOR_ERROR | QUOR_INFO);
  bridge = Publish();
  EXPECT_EQ(app->Reported(), std::uint64_t{QUOR_ERROR | QUOR_INFO}) << bridge->Log();
  EXPECT_EQ(bridge->End(SIGTERM), 0);
}

TEST_F(PublishingSettings, OfTwoEditorsOnlyTheFirstIsTaken) {
  quord.Start();
  const auto bridge = Publish();
  ASSERT_TRUE(bridge->Says("begins a stream"));
  const auto app = Settled();
  app->Reported();
  ClusterEditor alice(Address(), "alice"), bob(Address(), "bob");
  ASSERT_TRUE(WaitFor([&] { return alice.Open().empty(); })) << alice.Open();
  ASSERT_EQ(bob.Open(), "");
  EXPECT_EQ(alice.Set(QUOR_ERROR).text(), "");
  EXPECT_EQ(app->Reported(), QUOR_ERROR);
  const Response refused = bob.Set(QUOR_WARN);
  EXPECT_NE(refused.error(), ERROR_NONE);
  EXPECT_NE(refused.text().find("alice"), std::string::npos) << refused.text();
  ASSERT_EQ(bob.Open(), "");
  EXPECT_EQ(bob.Set(QUOR_WARN).text(), "");
  EXPECT_EQ(app->Reported(), QUOR_WARN) << "the refused one was never in force";
}

}  // namespace
