// What the environment sets holds from the very first trace, with and without a service.
#include <dlfcn.h>
#include <sys/prctl.h>

#include "fake_service.h"
#include "quor/quor.hpp"
#include "support/file_traces.h"
#include "support/temp_dir.h"

namespace {

QUOR_POINT(start_net_point, "Net", "Connect");
QUOR_POINT(start_db_point, "Db", "Query");

constexpr unsigned kForDevelopers = QUOR_INFO | QUOR_DEVELOPER;

// One trace of each kind.
void TraceAll() {
  QUOR_TRACE_AT(start_net_point, kForDevelopers, "net developer");
  QUOR_TRACE_INFO(start_net_point, "net info");
  QUOR_TRACE_AT(start_db_point, kForDevelopers, "db developer");
  QUOR_TRACE_INFO(start_db_point, "db info");
}

std::vector<std::string> TextsOf(const SeenApp& seen) {
  std::vector<std::string> texts;
  for (const SeenTrace& trace : seen.m_traces)
    texts.push_back((trace.component == "Quor" ? trace.category + ": " : "") + trace.text);
  return texts;
}

using Texts = std::vector<std::string>;

class StartedWith {
 public:
  StartedWith(const char* name, const std::string& value) : m_name(name) {
    setenv(name, value.c_str(), 1);
  }
  ~StartedWith() { unsetenv(m_name); }
  StartedWith(const StartedWith&) = delete;
  StartedWith& operator=(const StartedWith&) = delete;

 private:
  const char* const m_name;
};

class StartValuesTest : public testing::Test {
 protected:
  // Runs the body in a process that ends when the service has read it.
  std::unique_ptr<SeenApp> Run(const std::function<void()>& body, const char* last) {
    m_app.emplace([body](TracedChild& self) {
      body();
      self.AwaitGo();
      return 0;
    });
    auto seen = m_service.Accept();
    EXPECT_TRUE(seen && WaitFor([&] { return seen->Has(last); }));
    return seen;
  }

  FakeService m_service;
  std::optional<TracedChild> m_app;
};

TEST_F(StartValuesTest, TheFirstTracesHaveTheSettingsOfTheEnvironment) {
  const StartedWith settings("QUOR_SETTINGS", "Net=developer;*=off");
  const auto seen = Run(TraceAll, "net info");
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(TextsOf(*seen), (Texts{"Settings: started with QUOR_SETTINGS=Net=developer;*=off",
                                   "net developer", "net info"}));
}

TEST_F(StartValuesTest, TheyHoldWhileNoServiceRuns) {
  const StartedWith settings("QUOR_SETTINGS", "net/CONNECT=Info+developer");
  m_service.Stop();
  m_app.emplace([](TracedChild& self) {
    TraceAll();
    self.Report(quor_on(&start_net_point, QUOR_VERBOSE) != 0);
    self.AwaitGo();
    return 0;
  });
  EXPECT_EQ(m_app->Reported(), 0u);
  m_service.Listen();
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("db info"); }));
  EXPECT_TRUE(seen->Has("net developer"));
  EXPECT_FALSE(seen->Has("db developer"));
}

TEST_F(StartValuesTest, WithoutTheVariablesNothingIsToldAndSupportHolds) {
  const auto seen = Run(TraceAll, "db info");
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(TextsOf(*seen), (Texts{"net info", "db info"}));
}

TEST_F(StartValuesTest, StackAndLocationAreThereFromTheFirstTrace) {
  const StartedWith settings("QUOR_SETTINGS", "*=max");
  const auto seen = Run(TraceAll, "db info");
  ASSERT_NE(seen, nullptr);
  ASSERT_EQ(seen->m_traces.size(), 5u);
  EXPECT_NE(seen->m_traces[1].stack, "");
  EXPECT_NE(seen->m_traces[1].line, 0u);
}

TEST_F(StartValuesTest, APointThatALoadedLibraryDeclaresLaterHasThem) {
  const StartedWith settings("QUOR_SETTINGS", "plugin/step=off;Net=off");
  const std::string plugin = getenv("QUOR_PLUGIN");
  const auto seen = Run(
      [plugin] {
        TraceAll();
        void* const library = dlopen(plugin.c_str(), RTLD_NOW);
        ASSERT_NE(library, nullptr);
        reinterpret_cast<void (*)(const char*)>(dlsym(library, "PluginTrace"))("loaded");
        QUOR_TRACE_INFO(start_db_point, "last");
      },
      "last");
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(TextsOf(*seen), (Texts{"Settings: started with QUOR_SETTINGS=plugin/step=off;Net=off",
                                   "db info", "last"}));
}

TEST_F(StartValuesTest, AForkedChildHasThemAndDoesNotTellThemAgain) {
  const StartedWith settings("QUOR_SETTINGS", "*=developer;Db=Inffo");
  m_app.emplace([](TracedChild& self) {
    TraceAll();
    self.AwaitGo();  // so that its link is the first
    if (fork() == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      QUOR_TRACE_AT(start_net_point, kForDevelopers, "of the child");
    }
    for (;;) pause();
    return 0;
  });
  const auto parent = m_service.Accept();
  ASSERT_NE(parent, nullptr);
  m_app->Go();
  const auto child = m_service.Accept();
  ASSERT_NE(child, nullptr);
  ASSERT_TRUE(WaitFor([&] { return child->Has("of the child"); }));
  EXPECT_EQ(TextsOf(*child), (Texts{"of the child"}));
}

TEST_F(StartValuesTest, ABadRuleIsToldOnceAndTheOthersHold) {
  const StartedWith settings("QUOR_SETTINGS", "Db=Inffo;Net=developer");
  const auto seen = Run(TraceAll, "db info");
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(TextsOf(*seen),
            (Texts{"Settings: started with QUOR_SETTINGS=Db=Inffo;Net=developer",
                   "Settings: QUOR_SETTINGS: \"Inffo\" is no setting; did you mean \"Info\"? (in "
                   "\"Db=Inffo\")",
                   "net developer", "net info", "db info"}));
  EXPECT_EQ(seen->m_traces[0].attributes, int{QUOR_INFO});
  EXPECT_EQ(seen->m_traces[1].attributes, int{QUOR_WARN});
}

TEST_F(StartValuesTest, AFileSinkTakesTheFirstTraceAlsoOfAProcessThatIsKilledThen) {
  const std::string path = m_service.Folder() + "/own.trc";
  const StartedWith sink("QUOR_SINK", "file:" + path + "?flush=1");
  m_service.Stop();
  TracedChild app([](TracedChild&) {
    QUOR_TRACE_INFO(start_net_point, "first");
    kill(getpid(), SIGKILL);
    return 0;
  });
  EXPECT_EQ(app.Wait(), 1000 + SIGKILL);
  EXPECT_EQ(ReadTrc(path).texts,
            (Texts{"Quor/Settings: started with QUOR_SINK=file:" + path + "?flush=1",
                   "Net/Connect: first"}));
}

TEST_F(StartValuesTest, AFileSinkGoesOnWhenAServiceComesAndAnotherIsTakenWhenItOrdersOne) {
  const std::string path = m_service.Folder() + "/own.trc";
  const StartedWith sink("QUOR_SINK", "file:" + path);
  m_app.emplace([](TracedChild& self) {
    QUOR_TRACE_INFO(start_net_point, "first");
    self.AwaitGo();
    QUOR_TRACE_INFO(start_net_point, "second");
    self.AwaitGo();
    return 0;
  });
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->m_hello.taker, RingTaker::Application);
  EXPECT_TRUE(WaitFor([&] { return ReadTrc(path).texts.size() == 2; }));
  seen->SendSink(SinkKind::Socket, "localhost", "");
  ASSERT_TRUE(WaitFor([&] { return seen->Pump(), seen->m_taker == RingTaker::Service; }));
  m_app->Go();
  EXPECT_TRUE(WaitFor([&] { return seen->Has("second"); }));
  EXPECT_EQ(ReadTrc(path).texts.size(), 2u);
}

TEST_F(StartValuesTest, ASinkThatCannotBeReadIsToldAndNotUsed) {
  const StartedWith sink("QUOR_SINK", "fiel:/tmp/x.trc");
  const auto seen = Run(TraceAll, "db info");
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->m_hello.taker, RingTaker::Service);
  EXPECT_EQ(TextsOf(*seen).at(1).substr(0, 42), "Settings: QUOR_SINK: \"fiel:/tmp/x.trc\" beg");
}

TEST_F(StartValuesTest, AForkedChildWritesAFileOfItsOwn) {
  const std::string path = m_service.Folder() + "/own.trc";
  const StartedWith sink("QUOR_SINK", "file:" + path + "?flush=1");
  m_service.Stop();
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(start_net_point, "of the parent");
    const pid_t child = fork();
    if (child == 0) {
      QUOR_TRACE_INFO(start_net_point, "of the child");
      _exit(0);
    }
    self.Report(static_cast<std::uint64_t>(child));
    return WaitForExit(child);
  });
  const std::string child = std::to_string(app.Reported());
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(ReadTrc(path).texts.back(), "Net/Connect: of the parent");
  EXPECT_EQ(ReadTrc(m_service.Folder() + "/own.pid" + child + ".trc").texts,
            (Texts{"Net/Connect: of the child"}));
}

}  // namespace
