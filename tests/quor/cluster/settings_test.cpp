#include <gmock/gmock.h>

#include <random>

#include "quor/cluster/settings_desk.h"
#include "quor/cluster/settings_follower.h"
#include "support/fake_engine.h"

namespace {

using namespace quor::wire;
using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

// A machine's own service: applications with traces and a sink.
struct FakeMachine {
  struct FakeApp {
    std::vector<std::pair<Wanted::Trace, std::uint32_t>> traces;  // by id
    Sink sink;
    int handles = 0;
  };
  std::map<std::string, FakeApp> apps;
  std::string refuses;  // submits, with these words
  int submits = 0;

  bool Ask(const Request& request, Response* response, std::string* why) {
    *response = {};
    if (request.has_list_apps()) {
      for (const auto& [name, app] : apps) response->add_app_names(name);
      return true;
    }
    if (request.has_open_app()) apps[request.open_app().name()].handles++;
    if (request.has_open_app() || request.has_get_app())
      return Fill(request.has_open_app() ? request.open_app().name() : request.get_app().name(),
                  *response, why);
    if (request.has_close_app()) return apps[request.close_app().name()].handles--, true;
    if (!request.has_submit()) return true;
    if (!refuses.empty()) return Fail(*response, ERROR_ACCESS, refuses, why);
    ++submits;
    auto& app = apps.at(request.submit().app());
    EXPECT_GT(app.handles, 0);
    for (const auto& setting : request.submit().settings())
      app.traces.at(setting.trace_id()).second = setting.settings();
    if (request.submit().has_sink()) app.sink = request.submit().sink();
    return true;
  }
  std::uint32_t At(const std::string& app, const std::string& category) {
    for (const auto& [trace, settings] : apps.at(app).traces)
      if (trace.second == category) return settings;
    return 0xDEAD;
  }
  void Set(const std::string& app, const std::string& category, std::uint32_t settings) {
    for (auto& [trace, word] : apps.at(app).traces)
      if (trace.second == category) word = settings;
  }

 private:
  static bool Fail(Response& response, ErrorCode code, const std::string& text, std::string* why) {
    response.set_error(code);
    response.set_text(text);
    return FailWith(why, text);
  }
  bool Fill(const std::string& name, Response& response, std::string* why) {
    const auto app = apps.find(name);
    if (app == apps.end())
      return Fail(response, ERROR_UNKNOWN_APP, "no such application is known", why);
    response.mutable_app()->set_name(name);
    *response.mutable_app()->mutable_sink() = app->second.sink;
    for (std::uint32_t id = 0; id < app->second.traces.size(); ++id) {
      const auto& [trace, settings] = app->second.traces[id];
      auto& component = *response.mutable_app()->add_components();
      component.set_name(trace.first);
      auto& category = *component.add_categories();
      category.set_name(trace.second);
      category.set_trace_id(id);
      category.set_settings(settings);
    }
    return true;
  }
};

class Quiet final : public EngineUser {
 public:
  SettingsDesk* desk = nullptr;

 private:
  void OnAck(std::uint64_t, const EngineAck&) override {}
  void OnRefused(const std::string& what) override {
    if (desk) desk->OnRefused(what);
  }
  void OnDown(const std::string&) override {}
  void OnUp(const std::string&) override {}
};

// The publisher of a machine, which may end and come again.
class Publisher {
 public:
  Publisher(FakeCluster& cluster, FakeMachine& machine, const std::string& name)
      : m_follower(
            m_engine, name,
            [&machine](const Request& request, Response* response, std::string* why) {
              return machine.Ask(request, response, why);
            },
            [this](const std::string& line) { said.push_back(line); }, 0ms),
        m_engine(cluster, m_user) {
    std::string why;
    EXPECT_TRUE(m_follower.Start(&why)) << why;
    Step();
  }
  void Step() { m_follower.Step(1ms); }
  SettingsFollower& Follower() { return m_follower; }
  std::vector<std::string> said;

 private:
  Quiet m_user;
  SettingsFollower m_follower;
  FakeEngine m_engine;  // ends first
};

class Editor {
 public:
  Editor(FakeCluster& cluster, const std::string& machine, const std::string& who)
      : m_engine(cluster, m_user), m_desk(m_engine, machine, who, 50ms) {
    m_user.desk = &m_desk;
  }
  Response Open(const std::string& app) {
    Request request;
    request.mutable_open_app()->set_name(app);
    return Keep(app, m_desk.Answer(request));
  }
  Response Read(const std::string& app) {
    Request request;
    request.mutable_get_app()->set_name(app);
    return Keep(app, m_desk.Answer(request));
  }
  Response Set(const std::string& app, const std::string& category, std::uint32_t settings) {
    Request request;
    request.set_id(7);
    request.mutable_submit()->set_app(app);
    for (const auto& component : m_apps[app].components())
      for (const auto& known : component.categories())
        if (known.name() == category) {
          auto& setting = *request.mutable_submit()->add_settings();
          setting.set_trace_id(known.trace_id());
          setting.set_settings(settings);
        }
    return m_desk.Answer(request);
  }
  bool Knows(const std::string& app, const std::string& category) {
    for (const auto& component : m_apps[app].components())
      for (const auto& known : component.categories())
        if (known.name() == category) return true;
    return false;
  }
  Response Ask(const Request& request) { return m_desk.Answer(request); }

 private:
  Response Keep(const std::string& app, Response response) {
    if (response.error() == ERROR_NONE) m_apps[app] = response.app();
    return response;
  }
  Quiet m_user;
  FakeEngine m_engine;
  SettingsDesk m_desk;
  std::map<std::string, App> m_apps;
};

class ClusterSettings : public testing::Test {
 protected:
  ClusterSettings() {
    machine.apps["orders"].traces = {{{"Db", "Query"}, 1}, {{"Db", "Lock"}, 2}};
    publisher = std::make_unique<Publisher>(cluster, machine, "web1");
  }
  Publisher& Restart() {
    publisher.reset();
    return *(publisher = std::make_unique<Publisher>(cluster, machine, "web1"));
  }
  void Put(const std::string& key, const Wanted& wanted) {
    std::vector<std::uint8_t> value;
    ASSERT_TRUE(WriteWanted(wanted, value, nullptr));
    PutBytes(key, value);
  }
  void PutBytes(const std::string& key, std::vector<std::uint8_t> value) {
    Quiet user;
    FakeEngine engine(cluster, user);
    std::uint64_t revision = engine.Get(kSettingsBucket, key, 1s, nullptr)->revision;
    ASSERT_EQ(engine.PutValue(kSettingsBucket, key, value, revision, 1s, nullptr),
              Engine::Put::Done);
  }
  WantedState State(const std::string& app) {
    Quiet user;
    FakeEngine engine(cluster, user);
    WantedState state;
    const auto value = engine.Get(kSettingsBucket, WantedStateKey("web1", app), 1s, nullptr);
    EXPECT_TRUE(ReadWantedState(value->value, state, nullptr));
    return state;
  }

  FakeCluster cluster{"QUOR1"};
  FakeMachine machine;
  std::unique_ptr<Publisher> publisher;
  Editor ann{cluster, "web1", "ann@desk"}, bob{cluster, "web1", "bob@desk"};
};

TEST_F(ClusterSettings, AreTakenWhenTheSubmitIsAnswered) {
  ann.Open("orders");
  const Response response = ann.Set("orders", "Lock", 31);
  EXPECT_EQ(response.error(), ERROR_NONE) << response.text();
  EXPECT_EQ(response.id(), 7u);
  EXPECT_EQ(machine.At("orders", "Lock"), 31u);
  EXPECT_EQ(machine.At("orders", "Query"), 1u);
  publisher->Step();
  EXPECT_EQ(State("orders"), (WantedState{1, 0, ""}));
  EXPECT_EQ(machine.submits, 1) << "the key's change brings it a second time";
}

TEST_F(ClusterSettings, OfTwoEditorsTheSecondIsToldOfTheFirst) {
  ann.Open("orders");
  bob.Open("orders");
  EXPECT_EQ(ann.Set("orders", "Lock", 31).error(), ERROR_NONE);
  const Response refused = bob.Set("orders", "Lock", 0);
  EXPECT_EQ(refused.error(), ERROR_BAD_REQUEST);
  EXPECT_EQ(refused.text(),
            "ann@desk has changed the settings of orders on web1 since they were read here. Read "
            "them again and repeat the change.");
  EXPECT_EQ(machine.At("orders", "Lock"), 31u);
  EXPECT_EQ(bob.Set("orders", "Lock", 0).error(), ERROR_BAD_REQUEST) << "nothing was read again";
  EXPECT_EQ(bob.Read("orders").app().components(1).categories(0).settings(), 31u);
  EXPECT_EQ(bob.Set("orders", "Lock", 0).error(), ERROR_NONE);
  EXPECT_EQ(machine.At("orders", "Lock"), 0u);
}

TEST_F(ClusterSettings, AnEditorCanChangeSeveralTimes) {
  ann.Open("orders");
  for (std::uint32_t word = 3; word < 8; ++word)
    EXPECT_EQ(ann.Set("orders", "Query", word).error(), ERROR_NONE);
  EXPECT_EQ(machine.At("orders", "Query"), 7u);
}

TEST_F(ClusterSettings, OfAMachineThatIsAwayAreKeptAndTakenWhenItComes) {
  ann.Open("orders");
  publisher.reset();
  EXPECT_THAT(bob.Open("orders").text(), HasSubstr("web1 does not answer over the cluster: "));
  const Response response = ann.Set("orders", "Lock", 31);
  EXPECT_EQ(response.error(), ERROR_BAD_REQUEST);
  EXPECT_THAT(response.text(), AllOf(HasSubstr("The settings are kept, and are not in force yet"),
                                     HasSubstr("web1 does not answer")));
  EXPECT_EQ(machine.At("orders", "Lock"), 2u);
  Restart();
  EXPECT_EQ(machine.At("orders", "Lock"), 31u);
  EXPECT_EQ(State("orders"), (WantedState{1, 0, ""}));
}

TEST_F(ClusterSettings, OfATraceThatIsNotThereYetWaitForIt) {
  Wanted wanted{"web1", "orders", {{{"Ui", "Click"}, 9}, {{"Db", "Query"}, 5}}, {}, "ann"};
  Put(WantedKey("web1", "orders"), wanted);
  publisher->Step();
  EXPECT_EQ(machine.At("orders", "Query"), 5u);
  EXPECT_EQ(State("orders"), (WantedState{1, 1, ""}));
  // Somebody at the machine: it was taken once, and is theirs now.
  machine.Set("orders", "Query", 2);
  machine.apps["orders"].traces.push_back({{"Ui", "Click"}, 0});
  publisher->Step();
  EXPECT_EQ(machine.At("orders", "Click"), 9u);
  EXPECT_EQ(machine.At("orders", "Query"), 2u);
  EXPECT_EQ(State("orders"), (WantedState{1, 0, ""}));
}

TEST_F(ClusterSettings, DoNotUndoWhatWasChangedAtTheMachine) {
  ann.Open("orders");
  ann.Set("orders", "Lock", 31);
  machine.Set("orders", "Lock", 4);
  ann.Read("orders");
  ann.Set("orders", "Query", 6);
  EXPECT_EQ(machine.At("orders", "Lock"), 4u);
  EXPECT_EQ(machine.At("orders", "Query"), 6u);
  publisher->Step();
  Restart();
  EXPECT_EQ(machine.At("orders", "Lock"), 4u) << "a new start takes them again";
  EXPECT_EQ(machine.apps["orders"].handles, 2) << "the application is not held after a new start";
}

TEST_F(ClusterSettings, SetASinkOfAnApplicationThatNeverRan) {
  ann.Open("later");
  Request request;
  request.mutable_submit()->set_app("later");
  request.mutable_submit()->mutable_sink()->set_type(1);
  request.mutable_submit()->mutable_sink()->set_name("logs");
  EXPECT_EQ(ann.Ask(request).error(), ERROR_NONE);
  EXPECT_EQ(machine.apps.at("later").sink.name(), "logs");
  EXPECT_EQ(machine.apps.at("later").handles, 1);
}

TEST_F(ClusterSettings, ThatTheMachineRefusesAreToldInItsWords) {
  machine.refuses = "only its account may name a file";
  ann.Open("orders");
  EXPECT_THAT(ann.Set("orders", "Lock", 31).text(), HasSubstr(machine.refuses));
  publisher->Step();
  EXPECT_EQ(State("orders").trouble, machine.refuses);
  EXPECT_EQ(publisher->said.size(), 1u);
  machine.refuses.clear();
  publisher->Step();
  EXPECT_EQ(machine.At("orders", "Lock"), 31u);
  EXPECT_EQ(State("orders"), (WantedState{1, 0, ""}));
}

TEST_F(ClusterSettings, ThatTheClusterRefusesAreToldInItsWords) {
  ann.Open("orders");
  {
    std::lock_guard lock(cluster.mutex);
    cluster.refused = {"web1.*"};
  }
  // The engine's own words may come before or after the failed call.
  EXPECT_EQ(ann.Set("orders", "Lock", 31).error(), ERROR_BAD_REQUEST);
  EXPECT_THAT(ann.Set("orders", "Lock", 31).text(),
              AllOf(HasSubstr("the settings of web1 cannot be changed"), HasSubstr("Permission")));
  EXPECT_EQ(machine.At("orders", "Lock"), 2u);
}

TEST_F(ClusterSettings, OfAnotherMachineOrApplicationOrMalformedChangeNothing) {
  Wanted other{"web2", "orders", {{{"Db", "Lock"}, 31}}, {}, "eve"};
  Put(WantedKey("web1", "orders"), other);
  other.machine = "web1";
  Put(WantedKey("web1", "billing"), other);
  PutBytes(WantedKey("web1", "mail"), {0xff, 0xff, 0xff});
  PutBytes(WantedKey("web1", "new"), {0x08, 0x02});
  publisher->Step();
  EXPECT_EQ(machine.At("orders", "Lock"), 2u);
  EXPECT_EQ(machine.submits, 0);
  EXPECT_EQ(publisher->said.size(), 4u);
  publisher->Step();
  EXPECT_EQ(publisher->said.size(), 4u);
  // Nor does an editor replace what it cannot read.
  ann.Open("new");
  Request request;
  request.mutable_submit()->set_app("new");
  request.mutable_submit()->mutable_sink()->set_name("logs");
  EXPECT_THAT(ann.Ask(request).text(), HasSubstr("of a newer form, 2"));
}

TEST_F(ClusterSettings, AreFollowedAlsoAfterTheBucketWasMadeAgain) {
  ann.Open("orders");
  for (std::uint32_t word = 3; word < 8; ++word) ann.Set("orders", "Query", word);
  publisher->Step();
  {
    std::lock_guard lock(cluster.mutex);
    cluster.buckets[kSettingsBucket].BeginAnew();
  }
  publisher->Step();
  Put(WantedKey("web1", "orders"), {"web1", "orders", {{{"Db", "Query"}, 25}}, {}, "ann"});
  publisher->Step();
  EXPECT_EQ(machine.At("orders", "Query"), 25u);
}

TEST_F(ClusterSettings, ThatAreOlderThanThoseInForceAreNotTaken) {
  Wanted wanted{"web1", "orders", {{{"Db", "Query"}, 3}}, {}, "ann"};
  quor::cluster::QuestionMessage question;
  question.mutable_request()->mutable_submit()->set_app("orders");
  question.set_revision(1);
  std::vector<std::uint8_t> value;
  ASSERT_TRUE(WriteWanted(wanted, value, nullptr));
  question.set_wanted(value.data(), value.size());
  Put(WantedKey("web1", "orders"), wanted);
  wanted.settings.begin()->second = 25;
  Put(WantedKey("web1", "orders"), wanted);
  publisher->Step();
  // The question about the first was long on its way.
  const auto bytes = publisher->Follower().Answer(WriteQuestion(question), true);
  Response response;
  ASSERT_TRUE(response.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
  EXPECT_EQ(response.text(), "someone else has changed them again meanwhile");
  EXPECT_EQ(machine.At("orders", "Query"), 25u);
}

TEST_F(ClusterSettings, AKeyThatIsRemovedIsNotHeldAnyMore) {
  ann.Open("orders");
  ann.Set("orders", "Query", 3);
  EXPECT_EQ(machine.apps["orders"].handles, 1);
  PutBytes(WantedKey("web1", "orders"), {});
  publisher->Step();
  EXPECT_EQ(machine.apps["orders"].handles, 0);
  EXPECT_EQ(machine.At("orders", "Query"), 3u);
}

TEST_F(ClusterSettings, AreNotChangedWhereOnlyReadingIsAllowed) {
  quor::cluster::QuestionMessage question;
  question.mutable_request()->mutable_keep()->set_app("orders");
  Response response;
  const auto ask = [&](bool mayChange) {
    const auto bytes = publisher->Follower().Answer(WriteQuestion(question), mayChange);
    EXPECT_TRUE(response.ParseFromArray(bytes.data(), static_cast<int>(bytes.size())));
    return response.error();
  };
  EXPECT_EQ(ask(false), ERROR_BAD_REQUEST);
  EXPECT_EQ(ask(true), ERROR_NONE);
  question.mutable_request()->mutable_get_app()->set_name("orders");
  EXPECT_EQ(ask(false), ERROR_NONE);
  EXPECT_EQ(ask(true), ERROR_BAD_REQUEST);
  question.mutable_request()->mutable_open_app()->set_name("orders");
  EXPECT_EQ(ask(false), ERROR_BAD_REQUEST) << "handles of others are not the machine's";
  const std::vector<std::uint8_t> noise{1, 2, 3};
  EXPECT_THAT(publisher->Follower().Answer(noise, true), testing::Not(IsEmpty()));
}

TEST_F(ClusterSettings, AnAnswerThatNoMessageHoldsIsAnErrorInWords) {
  for (int i = 0; i < 20000; ++i)
    machine.apps["orders"].traces.push_back({{std::string(60, 'c'), std::to_string(i)}, 0});
  const Response response = ann.Open("orders");
  EXPECT_EQ(response.error(), ERROR_LIMIT);
  EXPECT_EQ(response.text(), "the answer is too large for a message of the cluster");
}

// Three editors, a machine whose publisher comes and goes, and whose applications get traces. What
// somebody was told to be stored is what the machine has in the end, unless a later one changed it.
TEST_F(ClusterSettings, TheLastThatWasStoredIsInForce) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&](unsigned end) { return random() % end; };
    FakeCluster place("QUOR1", seed);
    FakeMachine shop;
    const std::vector<std::string> categories{"a", "b", "c", "d"};
    for (const char* const app : {"x", "y"}) shop.apps[app].traces = {{{"C", "a"}, 0}};
    auto agent = std::make_unique<Publisher>(place, shop, "m");
    std::vector<std::unique_ptr<Editor>> editors;
    for (int i = 0; i < 3; ++i)
      editors.push_back(std::make_unique<Editor>(place, "m", "e" + std::to_string(i)));
    std::map<std::pair<std::string, std::string>, std::uint32_t> expected;
    for (std::uint32_t step = 1; step < 120; ++step) {
      const std::string app = below(2) ? "x" : "y", category = categories[below(4)];
      Editor& editor = *editors[below(3)];
      switch (below(6)) {
        case 0: {
          auto& traces = shop.apps[app].traces;
          if (traces.size() < 4) traces.push_back({{"C", categories[traces.size()]}, 0});
          break;
        }
        case 1:
          agent.reset();
          break;
        case 2:
          if (!agent) agent = std::make_unique<Publisher>(place, shop, "m");
          break;
        case 3:
          editor.Open(app);
          break;
        case 4: {
          const Response response = editor.Set(app, category, step);
          const bool isStored = response.error() == ERROR_NONE ||
                                response.text().starts_with("The settings are kept");
          if (editor.Knows(app, category) && isStored) expected[{app, category}] = step;
          break;
        }
        default:
          if (agent) agent->Step();
      }
    }
    if (!agent) agent = std::make_unique<Publisher>(place, shop, "m");
    agent->Step();
    for (const auto& [trace, word] : expected)
      EXPECT_EQ(shop.At(trace.first, trace.second), word)
          << "seed " << seed << ": " << trace.first << " " << trace.second;
  }
}

}  // namespace
