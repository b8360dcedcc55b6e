// What trc says of the accounts of a machine, to a service that the test plays.
#include "live_fixture.h"
#include "quor/client/fake_peer.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;
using quor::wire::Response;

class AccountsTest : public testing::Test {
 protected:
  AccountsTest() {
    const std::string path = m_dir.File("quord.sock");
    setenv("QUOR_SOCKET", path.c_str(), 1);
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_listener, 8), 0);
    Add("alice/shop", "alice", 2);
    Add("bob/mail/in", "bob", 1);
  }
  ~AccountsTest() override {
    close(m_listener);
    unsetenv("QUOR_SOCKET");
  }

  void Add(const std::string& app, const std::string& account, unsigned instances) {
    m_answer.add_app_names(app);
    m_answer.add_accounts(account);
    m_answer.add_app_instances(instances);
  }
  void AddWaiting(const std::string& app, const std::string& kept) {
    quor::wire::Waiting& waiting = *m_answer.add_waiting();
    waiting.set_app(app);
    waiting.set_kept(kept);
  }
  std::unique_ptr<FakePeer> Accept() const {
    pollfd ready{m_listener, POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, kPatienceMs), 1) << "trc does not come";
    auto peer = std::make_unique<FakePeer>(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
    peer->Welcome();
    return peer;
  }
  void AnswerList(FakePeer& peer) const {
    const auto request = peer.ExpectRequest();
    EXPECT_TRUE(request.has_list_apps());
    peer.Answer(request, m_answer);
  }
  TrcRun Apps(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), "apps");
    TrcProcess trc({.arguments = more});
    const std::unique_ptr<FakePeer> peer = Accept();
    AnswerList(*peer);
    return trc.Finish();
  }

  Response m_answer;

 private:
  const TempDir m_dir;
  int m_listener = -1;
};

TEST_F(AccountsTest, AppsHasAColumnForTheAccounts) {
  AddWaiting("carol/backup", "Net=max");
  const TrcRun run = Apps();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "alice/shop    alice\n"
            "bob/mail/in   bob\n"
            "carol/backup  carol  (does not run; kept: Net=max)\n");
}

TEST_F(AccountsTest, WithoutAccountsNamesStandAlone) {
  m_answer.clear_accounts();
  AddWaiting("alice/shop", "Net=max");
  AddWaiting("other/one", "Db=off");
  EXPECT_EQ(Apps().out,
            "bob/mail/in\n"
            "alice/shop  (does not run; kept: Net=max)\n"
            "other/one  (does not run; kept: Db=off)\n");
  const json apps = json::parse(Apps({"--json"}).out);
  ASSERT_EQ(apps.size(), 3u);
  for (const json& app : apps) EXPECT_FALSE(app.contains("account")) << app;
}

TEST_F(AccountsTest, JsonHasTheAccountOfEach) {
  AddWaiting("carol/backup", "Net=max");
  EXPECT_EQ(json::parse(Apps({"--json"}).out),
            json::parse(R"([{"application":"alice/shop","account":"alice","running":true,
                             "instances":2},
                            {"application":"bob/mail/in","account":"bob","running":true,
                             "instances":1},
                            {"application":"carol/backup","account":"carol","running":false,
                             "instances":0,"kept":"Net=max","prepared":false}])"));
}

TEST_F(AccountsTest, AnAccountThatSeesOnlyItsOwnHasPlainNames) {
  m_answer.Clear();
  Add("shop", "alice", 1);
  AddWaiting("mail/in", "Net=max");
  AddWaiting("backup", "Db=max");
  EXPECT_EQ(Apps().out,
            "shop     alice\n"
            "mail/in  alice  (does not run; kept: Net=max)\n"
            "backup   alice  (does not run; kept: Db=max)\n");
}

TEST_F(AccountsTest, UserListsTheApplicationsOfOne) {
  AddWaiting("bob/backup", "Net=max");
  EXPECT_EQ(Apps({"--user", "bob"}).out,
            "bob/mail/in  bob\n"
            "bob/backup   bob  (does not run; kept: Net=max)\n");
  EXPECT_EQ(json::parse(Apps({"--user", "alice", "--json"}).out).size(), 1u);
}

TEST_F(AccountsTest, UserMeansTheWholeNameOfAnAccount) {
  Add("al/shop", "al", 1);
  EXPECT_EQ(Apps({"--user", "al"}).out, "al/shop  al\n");
  EXPECT_EQ(Apps({"--user", "lice"}).status, 1);
}

TEST_F(AccountsTest, AnAccountWithoutApplicationsIsAnErrorThatNamesTheOthers) {
  const TrcRun run = Apps({"--user", "dave"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "trc: no application is of the account \"dave\"; there is \"alice\", \"bob\"\n");
}

TEST_F(AccountsTest, TailSaysThatTheAccountTracesNothingThoughOthersDo) {
  TrcProcess trc({.arguments = {"tail", "--user", "dave", "--for", "20"}});
  const std::unique_ptr<FakePeer> monitor = Accept();
  const auto subscribe = monitor->ExpectRequest();
  EXPECT_TRUE(subscribe.has_subscribe());
  monitor->Answer(subscribe);
  const std::unique_ptr<FakePeer> first = Accept();
  AnswerList(*first);
  TrcImage image("");
  image.Name(1, "4711 alice").Trace({.text = "hers", .pid = 1});
  monitor->Ledger({});
  monitor->Data(image.Bytes());
  monitor->Ledger({{.id = 'a', .serial = 1, .delivered = 1}});
  const std::unique_ptr<FakePeer> second = Accept();
  AnswerList(*second);
  trc.ReadErrUntil("\"bob\"\n");
  trc.Interrupt();
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "trc: no traces come: no application that runs is of the account \"dave\"; there is "
            "\"alice\", \"bob\"\n"
            "trc: no trace came of the account \"dave\"\n");
}

TEST_F(AccountsTest, TailRefusesAnAccountWhereTheServiceIsForOne) {
  m_answer.clear_accounts();
  for (const std::string command : {"tail", "capture"}) {
    std::vector<std::string> arguments = {command, "--user", "alice", "--for", "20"};
    TempDir dir;
    if (command == "capture") arguments.insert(arguments.end(), {"-o", dir.File("out.trc")});
    TrcProcess trc({.arguments = arguments});
    const std::unique_ptr<FakePeer> monitor = Accept();
    const auto subscribe = monitor->ExpectRequest();
    EXPECT_TRUE(subscribe.has_subscribe());
    monitor->Answer(subscribe);
    const std::unique_ptr<FakePeer> peer = Accept();
    AnswerList(*peer);
    const TrcRun run = trc.Finish();
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.err, "trc: --user: the trace service there is for one account\n");
  }
}

}  // namespace
