#include "quor/client/trace_config.h"

#include "fake_service.h"
#include "support/wait_for.h"

namespace {

using quor::wire::Response;

Response Orders() {
  Response response;
  auto& app = *response.mutable_app();
  app.set_name("orders");
  int id = 10;
  for (const char* component : {"Net", "Db"}) {
    auto& made = *app.add_components();
    made.set_name(component);
    for (const char* category : {"Connect", "Close"}) {
      auto& trace = *made.add_categories();
      trace.set_name(category);
      trace.set_trace_id(static_cast<std::uint32_t>(id));
      trace.set_settings(static_cast<std::uint32_t>(id++ - 10));
    }
  }
  app.mutable_sink()->set_type(1);
  app.mutable_sink()->set_name("localhost");
  app.mutable_sink()->set_options("node=orders1;");
  return response;
}

class ConfigTest : public testing::Test {
 protected:
  void Connect() {
    m_config = WhileServed([] { return trace_Config_i::Create("localhost"); },
                           [this] {
                             m_peer = m_service.Accept();
                             EXPECT_EQ(m_peer->Welcome().role(), quor::wire::ROLE_CONFIGURE);
                           });
    ASSERT_TRUE(m_config);
  }
  void OpenOrders() {
    Connect();
    m_app = WhileServed([] { return trace_App_i::Create("localhost", "orders"); },
                        [this] {
                          const auto request = m_peer->ExpectRequest();
                          EXPECT_EQ(request.open_app().name(), "orders");
                          m_peer->Answer(request, Orders());
                        });
    ASSERT_TRUE(m_app);
  }
  // What Submit sends; the service agrees, or not.
  quor::wire::Submit Submitted(bool agree = true) {
    quor::wire::Submit submit;
    const bool done = WhileServed([this] { return m_app->Submit(); },
                                  [&] {
                                    const auto request = m_peer->ExpectRequest();
                                    submit = request.submit();
                                    Response response;
                                    if (!agree) response.set_error(quor::wire::ERROR_ACCESS);
                                    m_peer->Answer(request, response);
                                  });
    EXPECT_EQ(done, agree);
    return submit;
  }
  std::string Map() const {
    std::string words;
    for (const auto& component : m_app->GetTraceMap())
      for (const auto& category : component.categories)
        words += component.name + "/" + category.name + " " + std::to_string(category.traceId) +
                 " = " + std::to_string(m_app->GetSettings(category.traceId)) + "\n";
    return words;
  }
  std::string Sink() const {
    trc_SinkTypes_e type{};
    std::string name, options;
    m_app->GetSink(type, name, options);
    return std::to_string(static_cast<unsigned>(type)) + " " + name + " " + options;
  }

  FakeService m_service;
  std::unique_ptr<FakePeer> m_peer;
  QuorPtr<trace_Config_i> m_config;
  QuorPtr<trace_App_i> m_app;
};

TEST_F(ConfigTest, AnUnreachableServiceIsNull) {
  m_service.StopListening();
  std::string why;
  EXPECT_FALSE(trace_Config_i::Create("", &why));
  EXPECT_NE(why, "");
  EXPECT_FALSE(trace_App_i::Create("", "orders"));
}

TEST_F(ConfigTest, AServiceThatHasGoneIsNullAlsoWhileAnotherHandleOnItIsOpen) {
  Connect();
  m_service.StopListening();
  m_peer.reset();
  std::string why;
  // A break is known once the connection's own thread has read the end of it.
  EXPECT_TRUE(Eventually(
      [&] { return !QuorPtr<trace_Config_i>(trace_Config_i::Create("localhost", &why)); }));
  EXPECT_EQ(why, "no trace service runs here; start it with quord (" + m_service.Path() +
                     ": No such file or directory)");
  m_service.Listen();
  const QuorPtr<trace_Config_i> again =
      WhileServed([] { return trace_Config_i::Create("localhost"); },
                  [this] {
                    m_peer = m_service.Accept();
                    m_peer->Welcome();
                  });
  EXPECT_TRUE(again);
}

TEST_F(ConfigTest, TheHostNameIsTheOneGiven) {
  Connect();
  EXPECT_EQ(m_config->GetHostName(), "localhost");
}

TEST_F(ConfigTest, TheListOfApplicationsIsAskedForAnewEachTimeAndHasNoDuplicates) {
  Connect();
  for (const std::string last : {"c", "d"}) {
    const auto apps =
        WhileServed([this] { return m_config->GetAppList(); },
                    [&] {
                      const auto request = m_peer->ExpectRequest();
                      EXPECT_TRUE(request.has_list_apps());
                      Response response;
                      for (const std::string& app : {std::string("b"), last, std::string("b")})
                        response.add_app_names(app);
                      m_peer->Answer(request, response);
                    });
    EXPECT_EQ(apps, (std::list<std::string>{"b", last}));
  }
}

TEST_F(ConfigTest, AnApplicationShowsWhatTheServiceSays) {
  OpenOrders();
  EXPECT_EQ(m_app->GetAppName(), "orders");
  EXPECT_EQ(Map(), "Net/Connect 10 = 0\nNet/Close 11 = 1\nDb/Connect 12 = 2\nDb/Close 13 = 3\n");
  EXPECT_EQ(Sink(), "1 localhost node=orders1;");
  EXPECT_EQ(m_app->GetTraceId("Db", "Connect"), 12u);
  EXPECT_EQ(m_app->GetTraceId("Db", "Nothing") & 0xFFFF, TRC_NO_TRACE_ID);
}

TEST_F(ConfigTest, AnUnknownApplicationHasAnEmptyMapAndASinkToTheLocalService) {
  Connect();
  m_app = WhileServed([] { return trace_App_i::Create("localhost", "new"); },
                      [this] { m_peer->Answer(m_peer->ExpectRequest()); });
  ASSERT_TRUE(m_app);
  EXPECT_TRUE(m_app->GetTraceMap().empty());
  EXPECT_EQ(Sink(), "1 localhost ");
}

TEST_F(ConfigTest, WhatIsSetIsHeldUntilSubmitAndThenSentTogether) {
  OpenOrders();
  m_app->SetSettings(11, 0x31F);
  m_app->SetSettings(99, 7);
  m_app->SetSink(trc_SinkFile, "/tmp/a.trc", "flush=1;");
  EXPECT_EQ(m_app->GetSettings(11), 0x31Fu);
  EXPECT_EQ(m_app->GetSettings(99), 0u) << "an unknown id is ignored";
  EXPECT_EQ(Sink(), "0 /tmp/a.trc flush=1;");
  const auto submit = Submitted();
  EXPECT_EQ(submit.app(), "orders");
  ASSERT_EQ(submit.settings_size(), 1);
  EXPECT_EQ(submit.settings(0).trace_id(), 11u);
  EXPECT_EQ(submit.settings(0).settings(), 0x31Fu);
  EXPECT_EQ(submit.sink().type(), 0u);
  EXPECT_EQ(submit.sink().name(), "/tmp/a.trc");
  EXPECT_EQ(submit.sink().options(), "flush=1;");
  const auto again = Submitted();
  EXPECT_EQ(again.settings_size(), 0) << "nothing is held any more";
  EXPECT_FALSE(again.has_sink());
}

TEST_F(ConfigTest, SetAllTracesCoversEveryTraceOfTheMap) {
  OpenOrders();
  m_app->SetAllTraces(15);
  EXPECT_EQ(Map(),
            "Net/Connect 10 = 15\nNet/Close 11 = 15\nDb/Connect 12 = 15\nDb/Close 13 = 15\n");
  EXPECT_EQ(Submitted().settings_size(), 4);
}

TEST_F(ConfigTest, ARefusedSubmitKeepsWhatIsHeld) {
  OpenOrders();
  m_app->SetSettings(10, 7);
  EXPECT_EQ(Submitted(false).settings_size(), 1);
  EXPECT_EQ(m_app->GetSettings(10), 7u);
  EXPECT_EQ(Submitted().settings_size(), 1);
}

TEST_F(ConfigTest, AServiceThatDoesNotAnswerCountsAsAwayUntilItIsHeardAgain) {
  OpenOrders();
  EXPECT_TRUE(m_config->IsUp());
  quor::wire::Request unanswered;
  EXPECT_FALSE(WhileServed([this] { return m_app->Refresh(); },
                           [&] { unanswered = m_peer->ExpectRequest(); }));
  EXPECT_FALSE(m_config->IsUp());
  m_peer->Answer(unanswered, Orders());
  EXPECT_TRUE(WaitFor([this] { return m_config->IsUp(); }));
}

TEST_F(ConfigTest, RefreshForgetsWhatIsHeldAndReadsAnew) {
  OpenOrders();
  m_app->SetAllTraces(15);
  m_app->SetSink(trc_SinkFile, "x", "");
  const bool done = WhileServed([this] { return m_app->Refresh(); },
                                [this] {
                                  const auto request = m_peer->ExpectRequest();
                                  EXPECT_EQ(request.get_app().name(), "orders");
                                  Response response = Orders();
                                  response.mutable_app()->mutable_components()->RemoveLast();
                                  m_peer->Answer(request, response);
                                });
  EXPECT_TRUE(done);
  EXPECT_EQ(Map(), "Net/Connect 10 = 0\nNet/Close 11 = 1\n");
  EXPECT_EQ(Sink(), "1 localhost node=orders1;");
}

TEST_F(ConfigTest, ASinkOfAnUnknownTypeStaysWhatItIs) {
  OpenOrders();
  WhileServed([this] { return m_app->Refresh(); },
              [this] {
                Response response = Orders();
                response.mutable_app()->mutable_sink()->set_type(9);
                m_peer->Answer(m_peer->ExpectRequest(), response);
              });
  EXPECT_EQ(Sink(), "9 localhost node=orders1;");
}

TEST_F(ConfigTest, ATraceWithTheIdThatMeansNoneIsLeftOut) {
  OpenOrders();
  WhileServed([this] { return m_app->Refresh(); },
              [this] {
                Response response = Orders();
                auto* const trace =
                    response.mutable_app()->mutable_components(0)->mutable_categories(0);
                trace->set_trace_id(0x1FFFF);
                m_peer->Answer(m_peer->ExpectRequest(), response);
              });
  EXPECT_EQ(m_app->GetTraceId("Net", "Connect"), TRC_NO_TRACE_ID);
  EXPECT_EQ(Map(), "Net/Close 11 = 1\nDb/Connect 12 = 2\nDb/Close 13 = 3\n");
}

TEST_F(ConfigTest, TheServicesHandleIsOpenWhileOneOfOursIs) {
  OpenOrders();
  QuorPtr<trace_App_i> second =
      WhileServed([] { return trace_App_i::Create("localhost", "orders"); },
                  [this] {
                    const auto request = m_peer->ExpectRequest();
                    EXPECT_TRUE(request.has_get_app());
                    m_peer->Answer(request, Orders());
                  });
  ASSERT_TRUE(second);
  m_app = nullptr;
  // An early message about the end would come before this question.
  EXPECT_TRUE(WhileServed([&] { return second->Refresh(); },
                          [this] {
                            const auto request = m_peer->ExpectRequest();
                            EXPECT_TRUE(request.has_get_app());
                            m_peer->Answer(request, Orders());
                          }));
  second = nullptr;
  EXPECT_EQ(m_peer->ExpectRequest().close_app().name(), "orders");
}

TEST_F(ConfigTest, AfterABreakOpenHandlesAreOpenedAgain) {
  OpenOrders();
  m_peer.reset();
  m_peer = m_service.Accept();
  m_peer->Welcome();
  EXPECT_EQ(m_peer->ExpectRequest().open_app().name(), "orders");
}

// One deadline for the connection and the question together.
TEST_F(ConfigTest, WhoWaitedForTheServiceDoesNotWaitAsLongForItsAnswer) {
  Connect();
  m_service.StopListening();
  m_peer.reset();
  ASSERT_TRUE(Eventually([this] { return !m_config->IsUp(); }));
  const auto began = std::chrono::steady_clock::now();
  const auto passed = [&] { return std::chrono::steady_clock::now() - began; };
  const QuorPtr<trace_App_i> app =
      WhileServed([] { return trace_App_i::Create("localhost", "orders"); },
                  [&] {
                    EXPECT_TRUE(Eventually([&] { return passed() > std::chrono::seconds(2); }));
                    m_service.Listen();
                    m_peer = m_service.Accept();
                    m_peer->Welcome();
                    EXPECT_TRUE(m_peer->ExpectRequest().has_open_app());
                  });
  EXPECT_FALSE(app);
  EXPECT_LT(passed(), std::chrono::milliseconds(6500));
}

TEST_F(ConfigTest, AQuestionThatABreakLeftOpenIsAskedAgain) {
  OpenOrders();
  m_app->SetSettings(10, 7);
  const bool done = WhileServed([this] { return m_app->Submit(); },
                                [this] {
                                  EXPECT_TRUE(m_peer->ExpectRequest().has_submit());
                                  m_peer.reset();
                                  m_peer = m_service.Accept();
                                  m_peer->Welcome();
                                  m_peer->Answer(m_peer->ExpectRequest(), Orders());
                                  const auto request = m_peer->ExpectRequest();
                                  EXPECT_EQ(request.submit().settings_size(), 1);
                                  m_peer->Answer(request);
                                });
  EXPECT_TRUE(done);
}

TEST_F(ConfigTest, AHandleThatABreakLeftUnopenedIsOpenedOnce) {
  Connect();
  const QuorPtr<trace_App_i> app =
      WhileServed([] { return trace_App_i::Create("localhost", "orders"); },
                  [this] {
                    EXPECT_TRUE(m_peer->ExpectRequest().has_open_app());
                    m_peer.reset();
                    m_peer = m_service.Accept();
                    m_peer->Welcome();
                    const auto request = m_peer->ExpectRequest();
                    EXPECT_EQ(request.open_app().name(), "orders");
                    m_peer->Answer(request, Orders());
                  });
  ASSERT_TRUE(app);
  EXPECT_TRUE(WhileServed([&] { return app->Refresh(); },
                          [this] {
                            const auto request = m_peer->ExpectRequest();
                            EXPECT_TRUE(request.has_get_app());
                            m_peer->Answer(request, Orders());
                          }));
}

TEST_F(ConfigTest, AnAnswerToNobodyIsPassedOverAndGarbageEndsTheConnection) {
  Connect();
  Response stray;
  stray.set_id(4711);
  m_peer->Send(FrameType::Response, stray);
  const QuorPtr<trace_App_i> app =
      WhileServed([] { return trace_App_i::Create("localhost", "orders"); },
                  [this] { m_peer->Answer(m_peer->ExpectRequest(), Orders()); });
  EXPECT_TRUE(app) << "the stray answer ended the connection";
  m_peer->SendRaw(FrameType::Response, "\xFF\xFF");
  EXPECT_TRUE(m_peer->Ended());
}

TEST_F(ConfigTest, TheEndOfTheLastHandleEndsTheConnection) {
  OpenOrders();
  m_config = nullptr;
  m_app = nullptr;
  EXPECT_TRUE(m_peer->Ended());
}

TEST(SettingsToLabel, WordsStandInTheOrderOfTheTable) {
  EXPECT_EQ(SettingsToLabel(7), "Info, Warn, Error");
  EXPECT_EQ(SettingsToLabel(799), "Info, Warn, Error, Developer, Verbose, Location, Stack");
  EXPECT_EQ(SettingsToLabel(TRC_SET_STACK | TRC_SET_WARN), "Warn, Stack");
}

TEST(SettingsToLabel, OnlyAWordOfZeroReadsOff) {
  EXPECT_EQ(SettingsToLabel(0), "Off");
  for (unsigned settings = 1; settings <= 0x10000; ++settings) {
    const std::string label = SettingsToLabel(settings);
    ASSERT_TRUE(label != "Off" && !label.empty()) << settings;
  }
}

TEST(SettingsToLabel, BitsWithoutAWordStandAfterTheWordsAsOneNumber) {
  EXPECT_EQ(SettingsToLabel(0x0020), "0x0020");
  EXPECT_EQ(SettingsToLabel(0xFCE0), "0xFCE0");
  EXPECT_EQ(SettingsToLabel(0x0422), "Warn, 0x0420");
  EXPECT_EQ(SettingsToLabel(0xFFFFFFFF),
            "Info, Warn, Error, Developer, Verbose, Location, Stack, 0xFFFFFCE0");
}

}  // namespace
