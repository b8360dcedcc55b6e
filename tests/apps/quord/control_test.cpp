// What an administrator does with a service that runs: its status, its end, its files read again.
#include <sys/stat.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

QUOR_POINT(control_point, "Net", "Connect");

class Control : public ::testing::Test {
 protected:
  // What a command prints.
  std::string Output(const std::vector<std::string>& arguments, int status = 0) {
    const std::size_t before = quord.Log().size();
    EXPECT_EQ(quord.Run(arguments), status) << arguments.front() << quord.Log().substr(before);
    return quord.Log().substr(before);
  }
  nlohmann::json Status() {
    const std::string log = Output({"status", "--json"});
    const std::size_t begin = log.find("{\n"), end = log.find("\n}", begin);
    EXPECT_NE(end, std::string::npos) << log;
    return nlohmann::json::parse(log.substr(begin, end + 2 - begin), nullptr, false);
  }
  void Write(const std::string& text) { std::ofstream(m_config) << text; }
  static bool Has(const std::string& text, const std::string& words) {
    return text.find(words) != std::string::npos;
  }
  QuordProcess quord;
  const std::string m_config = quord.Folder().File("own.conf");
};

TEST_F(Control, StatusHasWhatAnAdministratorAsks) {
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    for (int i = 0; i < 70; ++i) QUOR_TRACE_INFO(control_point, "{}", i);
    self.Report(static_cast<std::uint64_t>(quor_flush(20000)));
    self.AwaitGo();
    return 0;
  });
  ASSERT_EQ(quord.Run({"keys", "init"}), 0);
  quord.Start({"--listen", "127.0.0.1:0"});
  ASSERT_EQ(app.Reported(), 1u);
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  nlohmann::json status;
  EXPECT_TRUE(WaitFor([&] { return status = Status(), status["traces"] == 70; })) << status;
  EXPECT_EQ(status["running"], true);
  EXPECT_EQ(status["pid"], quord.Pid());
  EXPECT_EQ(status["version"].get<std::string>().substr(0, 2), "3.");
  EXPECT_EQ(status["since"].get<std::string>().size(), std::string("2026-11-22T22:00:00Z").size());
  EXPECT_EQ(status["listening"][0], "127.0.0.1:" + quord.Port());
  EXPECT_EQ(status["instances"], 1);
  EXPECT_EQ(status["monitors"], 1);
  EXPECT_EQ(status["clients"], 1);
  EXPECT_EQ(status["lost"], 0);
  EXPECT_EQ(status["dropped"], 0);
  EXPECT_EQ(status["apps"][0], "orders");
  EXPECT_EQ(status["certificates"].size(), 2u) << status;
  const std::string text = Output({"status"});
  EXPECT_TRUE(Has(text, "  1 running applications, 1 monitors, 70 traces (0 a second)\n")) << text;
  EXPECT_TRUE(Has(
      text, "  the certificate of this service in " + quord.KeysFolder() + " is valid until 20"))
      << text;
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(Control, NamesOfApplicationsGiveATerminalNoOrders) {
  TracedChild app([](TracedChild& self) {
    quor_application(
        "\x1b[31mred\nquord runs\x7F\xC2\x9B"
        "1m \xC3\xA9");
    QUOR_TRACE_INFO(control_point, "x");
    self.Report(static_cast<std::uint64_t>(quor_flush(20000)));
    self.AwaitGo();
    return 0;
  });
  quord.Start();
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(WaitFor([&] { return Status()["apps"].size() == 1; }));
  const std::string text = Output({"status"});
  EXPECT_TRUE(Has(text, "  ?[31mred?quord runs??1m \xC3\xA9\n")) << text;
  EXPECT_EQ(text.find('\x1b'), std::string::npos);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(Control, StopWaitsForTheEndAndReportsWhenNothingRan) {
  EXPECT_TRUE(Has(Output({"stop"}, 3), "quord does not run at " + quord.SocketPath()));
  EXPECT_TRUE(Has(Output({"status"}, 3), "quord does not run at "));
  EXPECT_TRUE(Has(Output({"reload"}, 3), "quord does not run at "));
  EXPECT_EQ(quord.Run({}), 0);
  EXPECT_TRUE(Has(Output({"stop"}), "quord has ended (process "));
  EXPECT_NE(access(quord.SocketPath().c_str(), F_OK), 0);
  EXPECT_EQ(quord.Run({"status"}), 3);
}

TEST_F(Control, ReloadTakesWhatCanBeChangedAndSaysWhatNeedsARestart) {
  Write("log-level = info\n");
  quord.Start({"--config", m_config, "--default-settings", "off"});
  EXPECT_EQ(Status()["config"], m_config);
  Write("log-level = error\nlisten = 127.0.0.1:0\ndefault-settings = max\n");
  // On the command line of the test the level is given, so the file's has no effect.
  const std::string said = Output({"reload"});
  EXPECT_TRUE(Has(said, "\nlisten needs a restart\n")) << said;
  EXPECT_TRUE(Has(said, "quord has read its configuration again\n")) << said;
  EXPECT_FALSE(Has(said, "changed")) << said;
  EXPECT_EQ(quord.Stop(), 0);
}

TEST_F(Control, AFaultyFileChangesNothingAndIsReportedByReloadAndByTheSignal) {
  Write("default-settings = off\n");
  quord.Start({"--config", m_config});
  Write("default-settings = max\nlisen = 1\n");
  const std::string fault =
      m_config + ": line 2: there is no option \"lisen\"; did you mean \"listen\"?";
  EXPECT_TRUE(Has(Output({"reload"}, 1), "quord: " + fault));
  EXPECT_TRUE(quord.Says("error: cannot reload, all stays as it is: " + fault));
  Write("default-settings = max\n");
  const std::size_t before = quord.Log().size();
  kill(quord.Pid(), SIGHUP);
  EXPECT_TRUE(WaitFor([&] {
    const std::string log = quord.Log();
    return log.find("info: default-settings has changed, for new applications", before) !=
           std::string::npos;
  })) << quord.Log();
  // It serves as before, and a new application begins with the new settings.
  TracedChild app([](TracedChild& self) {
    quor_application("later");
    QUOR_TRACE_INFO(control_point, "x");
    self.Report(static_cast<std::uint64_t>(quor_flush(20000)));
    self.AwaitGo();
    return 0;
  });
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  ASSERT_EQ(app.Reported(), 1u);
  Request request;
  request.mutable_get_app()->set_name("later");
  quor::wire::Response answer;
  EXPECT_TRUE(WaitFor([&] {
    answer = client.Ask(request);
    return answer.app().components_size() > 0;
  }));
  EXPECT_EQ(answer.app().components(0).categories(0).settings(), 0x31Fu);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(quord.Stop(), 0);
}

TEST_F(Control, AServiceWithAFaultyFileDoesNotStart) {
  Write("keys-dir = here\n");
  EXPECT_TRUE(Has(Output({"--foreground", "--config", m_config}, 2),
                  "line 1: keys-dir: \"here\" is not an absolute path"));
  EXPECT_TRUE(Has(Output({"--config", quord.Folder().File("none")}, 2), "No such file"));
}

TEST_F(Control, TheUsualFileIsReadAndNamesTheSocketForAllCommands) {
  const std::string folder = quord.Folder().File("sockets"), usual = quord.UsualConfig();
  std::ofstream(usual) << "socket-dir = " << folder << "\n";
  quord.Start();
  EXPECT_EQ(access((folder + "/quord.sock").c_str(), F_OK), 0);
  EXPECT_EQ(Status()["socket"], folder + "/quord.sock");
  EXPECT_EQ(Status()["config"], usual);
  EXPECT_EQ(quord.Run({"stop"}), 0);
  EXPECT_EQ(quord.Wait(), 0);
  RemoveSegments(folder);
}

TEST_F(Control, CheckConfigChecksTheFilesThatAreNamedToo) {
  EXPECT_TRUE(Has(Output({"check-config"}), "there is no such file, the defaults apply"));
  Write("listen = 127.0.0.1:7447\n");
  EXPECT_TRUE(Has(Output({"check-config", m_config}, 1), "server.key: No such file"));
  ASSERT_EQ(quord.Run({"keys", "init"}), 0);
  EXPECT_EQ(Output({"check-config", m_config}),
            "listen = 127.0.0.1:7447\n" + m_config + ": good\n");
  Write("listen = 127.0.0.1:7447\ncrl = " + m_config + "\n");
  EXPECT_TRUE(Has(Output({"check-config", m_config}, 1), "holds no revocation list (PEM)"));
  Write("lissten = 127.0.0.1:7447\nlog-level = max\n");
  const std::string faults = Output({"check-config", m_config}, 1);
  EXPECT_TRUE(Has(faults, m_config + ": line 1: there is no option \"lissten\"")) << faults;
  EXPECT_TRUE(Has(faults, m_config + ": line 2: log-level: \"max\" is no level")) << faults;
}

}  // namespace
