// Certificates of an authority that the organisation has already: roles by unit or alternative
// name, revocation, expiry. All over real TLS.
#include <quor/quor.hpp>

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "quor/client/trace_config.h"
#include "quor/client/trace_thread.h"
#include "quord_client.h"
#include "support/test_authority.h"

namespace {

QUOR_POINT(step_point, "Net", "Step");

class Certificates : public ::testing::Test {
 protected:
  void SetUp() override {
    LeafOrder order;
    order.name = "orders1";
    order.altNames = "DNS:localhost,IP:127.0.0.1";
    order.server = true;
    m_server = m_authority.Issue(quord.KeysFolder(), order);
  }
  void Serve(const std::string& config) {
    std::ofstream(m_config) << "listen = 127.0.0.1:0\n" << config;
    quord.Start({"--config", m_config});
    m_machine = "127.0.0.1:" + quord.Port();
  }
  long Issue(const std::string& name, const std::vector<std::string>& units,
             const std::string& altNames = "", int days = 100) {
    LeafOrder order;
    order.name = name;
    order.units = units;
    order.altNames = altNames;
    order.days = days;
    return m_authority.Issue(Keys(name), order);
  }
  std::string Keys(const std::string& name) const { return quord.Folder().File("of-" + name); }
  // "" when the certificate lets a monitor in, else why not.
  std::string WhyNotMonitor(const std::string& name) {
    setenv("QUOR_KEYS", Keys(name).c_str(), 1);
    NameMap names;
    std::string why;
    TraceThread_i* const monitor = TraceThread_i::ConnectToTraceService(m_machine, names, &why);
    if (monitor) monitor->Disconnect();
    return monitor ? "" : why;
  }
  std::string WhyNotConfigure(const std::string& name) {
    setenv("QUOR_KEYS", Keys(name).c_str(), 1);
    std::string why;
    const QuorPtr<trace_Config_i> config = trace_Config_i::Create(m_machine, &why);
    return config ? "" : why;
  }
  static bool Has(const std::string& text, const std::string& words) {
    return text.find(words) != std::string::npos;
  }

  QuordProcess quord;
  TestAuthority m_authority;
  const std::string m_config = quord.Folder().File("own.conf");
  std::string m_machine;
  long m_server = 0;  // the number of the service's certificate
};

// Another service, which forwards the traces of an application to the first one.
class ForwarderCertificates : public Certificates {
 protected:
  void SetUp() override {
    Certificates::SetUp();
    Serve("");
    ASSERT_TRUE(m_monitor.Monitor(quord.SocketPath()));
  }
  void IssueForwarding(const std::string& folder) {
    LeafOrder order;
    order.name = "near";
    order.units = {"forward"};
    m_authority.Issue(folder, order);
  }
  void Forward() {
    m_near.Start({"--crl", m_lists});
    QuordClient client(m_near.SocketPath());
    ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    ASSERT_EQ(client.Ask(OpenAppRequest("orders")).error(), quor::wire::ERROR_NONE);
    ASSERT_EQ(client.Ask(SinkRequest("orders", 1, m_machine)).error(), quor::wire::ERROR_NONE);
    setenv("QUOR_SOCKET", m_near.SocketPath().c_str(), 1);
    m_app.emplace([](TracedChild& self) {
      quor_application("orders");
      for (unsigned step = 0;; ++step) {
        QUOR_TRACE_INFO(step_point, "step {}", step);
        quor_flush(10000);
        self.Report(step);
        self.AwaitGo();
      }
      return 0;
    });
    EXPECT_EQ(m_app->Reported(), 0u);
    EXPECT_TRUE(m_monitor.Sees("step 0")) << m_near.Log();
  }
  // The list names the service now.
  void ExpectItLeaves() {
    EXPECT_EQ(m_near.Run({"reload"}), 0);
    EXPECT_TRUE(m_near.Says("cannot forward to " + m_machine + ": " + m_machine +
                            ": the certificate is refused: certificate revoked"))
        << m_near.Log();
    m_app->Go();
    EXPECT_EQ(m_app->Reported(), 1u);
    m_monitor.Pump();
    EXPECT_EQ(m_monitor.delivered, 1u);
  }

  QuordProcess m_near;
  QuordClient m_monitor;
  const std::string m_lists = m_near.Folder().File("lists.pem");
  std::optional<TracedChild> m_app;
};

TEST_F(Certificates, TheUnitGivesTheRoleByItsNameAndByWhatItIsMappedTo) {
  Issue("alice", {"People", "configure"});
  Issue("bob", {"monitor"});
  Issue("carol", {"Operations"});
  Serve("");
  EXPECT_EQ(WhyNotConfigure("alice"), "");
  EXPECT_EQ(WhyNotMonitor("bob"), "");
  EXPECT_TRUE(Has(WhyNotConfigure("bob"), "the certificate does not allow to configure"));
  EXPECT_TRUE(Has(WhyNotMonitor("carol"), "the certificate does not allow to monitor"));
  quord.Stop();
  // As soon as one text is mapped, the names of roles give nothing: they may mean something else.
  Serve("map-role = configure=Operations\n");
  EXPECT_EQ(WhyNotConfigure("carol"), "");
  EXPECT_TRUE(Has(WhyNotMonitor("bob"), "the certificate does not allow to monitor"));
  EXPECT_TRUE(Has(WhyNotMonitor("alice"), "the certificate does not allow to monitor"));
}

TEST_F(Certificates, AnAlternativeNameGivesTheRoleWhenItIsToDoSo) {
  Issue("alice", {"monitor"}, "URI:quor:configure,DNS:desk.example.org");
  Issue("bob", {"configure"}, "DNS:bob.example.org");
  Serve("role-from = san\n");
  EXPECT_EQ(WhyNotConfigure("alice"), "");
  EXPECT_TRUE(Has(WhyNotMonitor("bob"), "the certificate does not allow to monitor"));
  quord.Stop();
  Serve("role-from = san\nmap-role = monitor=bob.example.org\n");
  EXPECT_EQ(WhyNotMonitor("bob"), "");
  EXPECT_TRUE(Has(WhyNotConfigure("bob"), "the certificate does not allow to configure"));
  EXPECT_TRUE(Has(WhyNotMonitor("alice"), "the certificate does not allow to monitor"));
}

TEST_F(Certificates, ARevokedOneIsRefusedAndOneThatIsRevokedMeanwhileIsEnded) {
  const std::string lists = quord.Folder().File("lists.pem");
  const long revoked = Issue("mallory", {"monitor"}), later = Issue("eve", {"monitor"});
  Issue("bob", {"monitor"});
  m_authority.Revoke(lists, {revoked});
  Serve("crl = " + lists + "\n");
  EXPECT_EQ(WhyNotMonitor("bob"), "");
  EXPECT_NE(WhyNotMonitor("mallory"), "");
  EXPECT_TRUE(quord.Says("is refused: the certificate is refused: certificate revoked"));
  setenv("QUOR_KEYS", Keys("eve").c_str(), 1);
  NameMap names;
  std::string why;
  TraceThread_i* const monitor = TraceThread_i::ConnectToTraceService(m_machine, names, &why);
  ASSERT_TRUE(monitor) << why;
  m_authority.Revoke(lists, {revoked, later});
  EXPECT_EQ(quord.Run({"reload"}), 0);
  EXPECT_TRUE(
      quord.Says("eve at 127.0.0.1 has disconnected: the certificate is refused: "
                 "certificate revoked"));
  monitor->Disconnect();
  EXPECT_NE(WhyNotMonitor("eve"), "");
  EXPECT_EQ(WhyNotMonitor("bob"), "");
}

TEST_F(Certificates, AListThatHasExpiredIsRefusedWithWordsAndTheOldOneStays) {
  const std::string lists = quord.Folder().File("lists.pem");
  const long revoked = Issue("mallory", {"monitor"});
  Issue("bob", {"monitor"});
  m_authority.Revoke(lists, {}, -1);
  std::ofstream(m_config) << "listen = 127.0.0.1:0\ncrl = " << lists << "\n";
  EXPECT_EQ(quord.Run({"--foreground", "--config", m_config}), 1);
  const std::string words = lists + ": the revocation list of Example CA has expired on 20";
  EXPECT_TRUE(quord.Says("quord: " + words));
  m_authority.Revoke(lists, {revoked});
  Serve("crl = " + lists + "\n");
  m_authority.Revoke(lists, {}, -1);
  EXPECT_EQ(quord.Run({"reload"}), 1);
  EXPECT_TRUE(quord.Says("error: cannot reload, all stays as it is: " + words));
  EXPECT_EQ(WhyNotMonitor("bob"), "");
  EXPECT_NE(WhyNotMonitor("mallory"), "");
}

TEST_F(Certificates, AListThatExpiresWhileTheServiceRunsIsSaidToHaveExpired) {
  const std::string lists = quord.Folder().File("lists.pem");
  m_authority.RevokeFor(lists, {}, 10);  // a busy machine takes seconds for the start
  Serve("crl = " + lists + "\n");
  EXPECT_TRUE(WaitFor([&] {
    const std::size_t before = quord.Log().size();
    EXPECT_EQ(quord.Run({"status"}), 0);
    return Has(quord.Log().substr(before), "  the revocation list of Example CA has expired at 20");
  })) << quord.Log();
}

TEST_F(Certificates, OneThatHasExpiredIsRefusedAndOneThatSoonWillIsReported) {
  Issue("bob", {"monitor"}, "", -1);
  Issue("carol", {"monitor"}, "", 12);
  LeafOrder order;
  order.altNames = "IP:127.0.0.1";
  order.server = true;
  order.days = 29;
  m_authority.Issue(quord.KeysFolder(), order);
  Serve("");
  EXPECT_NE(WhyNotMonitor("bob"), "");
  EXPECT_TRUE(quord.Says("is refused: the certificate is refused: certificate has expired"));
  EXPECT_EQ(WhyNotMonitor("carol"), "");
  EXPECT_TRUE(
      quord.Says("warning: the certificate of carol at 127.0.0.1 expires in 12 days, on 2"));
  const std::string words =
      "the certificate of this service in " + quord.KeysFolder() + " expires in 29 days, on 2";
  EXPECT_TRUE(quord.Says("warning: " + words));
  EXPECT_EQ(quord.Run({"status"}), 0);
  EXPECT_TRUE(quord.Says("  trouble: " + words));
  // One that is valid for longer, read by a reload, ends the trouble.
  order.days = 31;
  m_authority.Issue(quord.KeysFolder(), order);
  EXPECT_EQ(quord.Run({"reload"}), 0);
  const std::size_t before = quord.Log().size();
  EXPECT_EQ(quord.Run({"status"}), 0);
  EXPECT_EQ(quord.Log().find("trouble:", before), std::string::npos);
  EXPECT_EQ(WhyNotMonitor("carol"), "");
}

TEST_F(Certificates, AClientRefusesAServerThatTheListBesideItsKeysRevokes) {
  Issue("bob", {"configure"});
  Serve("");
  const std::string list = Keys("bob") + "/crl.pem";
  m_authority.Revoke(list, {m_server + 100});
  EXPECT_EQ(WhyNotMonitor("bob"), "");
  EXPECT_EQ(WhyNotConfigure("bob"), "");
  m_authority.Revoke(list, {m_server});
  EXPECT_TRUE(Has(WhyNotMonitor("bob"), "the certificate is refused: certificate revoked"));
  EXPECT_TRUE(Has(WhyNotConfigure("bob"), "the certificate is refused: certificate revoked"));
  m_authority.Revoke(list, {}, -1);
  EXPECT_TRUE(Has(WhyNotMonitor("bob"), list + ": the revocation list of Example CA has expired"));
  std::ofstream(list) << "nothing";
  EXPECT_TRUE(Has(WhyNotMonitor("bob"), list + ": holds no revocation list (PEM)"));
}

TEST_F(ForwarderCertificates, AServerThatIsRevokedIsLeftAndGetsEverythingWhenItIsGoodAgain) {
  IssueForwarding(m_near.KeysFolder());
  m_authority.Revoke(m_lists, {});
  Forward();
  m_authority.Revoke(m_lists, {m_server});
  ExpectItLeaves();
  m_authority.Revoke(m_lists, {});
  EXPECT_TRUE(m_monitor.Sees("step 1")) << "the list is read before each attempt";
  EXPECT_EQ(m_monitor.delivered, 2u);
  EXPECT_EQ(m_monitor.lost, 0u);
}

TEST_F(ForwarderCertificates, UnderAnotherAuthorityTheListBesideItsKeysCounts) {
  TestAuthority other;
  LeafOrder order;
  order.server = true;
  other.Issue(m_near.KeysFolder(), order);
  other.Revoke(m_lists, {m_server});  // these numbers are those of other certificates
  const std::string folder = m_near.KeysFolder() + "/forward";
  IssueForwarding(folder);
  Forward();
  m_authority.Revoke(folder + "/crl.pem", {m_server});
  ExpectItLeaves();
}

}  // namespace
