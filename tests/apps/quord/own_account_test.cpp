// Who is no administrator of the service of a machine: sees and changes what is of his own account.
#include <quor/quor.hpp>

#include "machine_fixture.h"

namespace {

QUOR_POINT(own_point, "Net", "Connect");
QUOR_POINT(flood_point, "Net", "Flood");

class OwnAccount : public MachineFixture {
 protected:
  // Traces once, and again at each go.
  static int Steady(TracedChild& self, const char* app, int lines) {
    quor_application(app);
    for (;;) {
      self.AwaitGo();
      for (int i = 0; i < lines; ++i) QUOR_TRACE_INFO(own_point, "{}", i);
      quor_flush(20000);  // taken by the service
      self.Report(quor_on(&own_point, QUOR_INFO) != 0);
    }
  }
  std::unique_ptr<TracedChild> Steadily(uid_t account, const char* app, int lines = 10) {
    return Program(account, [app, lines](TracedChild& self) { return Steady(self, app, lines); });
  }
  static std::uint64_t Traced(const std::unique_ptr<TracedChild>& program) {
    program->Go();
    return program->Reported();
  }
};

// The monitor is a process of the account, and checks every count itself.
TEST_F(OwnAccount, AMonitorGetsItsOwnTracesCountedExactlyWhileAnotherAccountFloods) {
  if (!IsRoot()) return;  // there is one account
  const auto flood = Program(kMail, [](TracedChild& self) {
    quor_application("flood");
    self.Report(0);
    for (std::uint64_t i = 0;; ++i) QUOR_TRACE_INFO(flood_point, "secret {}", i);
    return 0;
  });
  const auto own = Steadily(kGames, "orders", 100);
  Start();
  EXPECT_EQ(flood->Reported(), 0u);
  TracedChild monitor([&](TracedChild& self) {
    BecomeAccount(kGames);
    QuordClient client;
    EXPECT_TRUE(client.Monitor(Socket()));
    for (int round = 0; round < 3; ++round) {
      self.Report(1);
      // A pause, whose losses are its own alone.
      Request request;
      round == 1 ? void(request.mutable_pause()) : void(request.mutable_resume());
      EXPECT_EQ(client.Ask(request).error(), quor::wire::ERROR_NONE);
      self.Report(2);
      if (round == 1) continue;
      const std::uint64_t wanted = round == 0 ? 100 : 300;
      EXPECT_TRUE(WaitFor([&] { return client.Pump(), client.Sum() == wanted; })) << client.Sum();
    }
    // The connection breaks, and comes again: no gap, and then the gap of what came meanwhile.
    for (int round = 0; round < 2; ++round) {
      client.Close();
      self.Report(3);
      self.AwaitGo();
      EXPECT_TRUE(client.Monitor(Socket()));
      const std::uint64_t wanted = round == 0 ? 300 : 400;
      EXPECT_EQ(client.Sum(), wanted);
    }
    EXPECT_EQ(client.serials.size(), 1u) << "no other source is named";
    for (const SeenTrace& trace : client.traces) {
      EXPECT_EQ(trace.app, "orders");
      EXPECT_NE(trace.pid.find(" games"), std::string::npos);
    }
    EXPECT_TRUE(client.losses.empty());
    EXPECT_EQ(client.gaps, 100u);
    return 0;
  });
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(monitor.Reported(), 1u);
    EXPECT_EQ(monitor.Reported(), 2u);
    EXPECT_EQ(Traced(own), 1u);
  }
  EXPECT_EQ(monitor.Reported(), 3u);
  monitor.Go();
  EXPECT_EQ(monitor.Reported(), 3u);
  EXPECT_EQ(Traced(own), 1u);
  monitor.Go();
  EXPECT_EQ(monitor.Wait(), 0);
}

TEST_F(OwnAccount, ItListsOpensAndChangesItsOwnApplicationsAndKnowsNoOthers) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Steadily(kGames, "shop"), mail = Steadily(kMail, "shop"),
             secret = Steadily(kMail, "secret"), odd = Steadily(kGames, "mail/secret");
  Start();
  for (const auto* const program : {&games, &mail, &secret, &odd}) EXPECT_EQ(Traced(*program), 1u);
  EXPECT_EQ(
      AsClient(
          kGames,
          [](QuordClient& client) {
            const std::string all = "mail/secret 1 games\nshop 1 games\n";
            EXPECT_TRUE(WaitFor([&] { return Listed(client) == all; })) << Listed(client);
            EXPECT_EQ(client.Ask(GetAppRequest("secret")).error(), quor::wire::ERROR_UNKNOWN_APP);
            const Response shop = client.Ask(OpenAppRequest("shop"));
            EXPECT_EQ(shop.app().name(), "shop");
            EXPECT_EQ(client.Ask(SubmitAllRequest(shop.app(), 0)).error(), quor::wire::ERROR_NONE);
            // A name that looks like another account's is a name of its own.
            const Response named = client.Ask(OpenAppRequest("mail/secret"));
            EXPECT_EQ(client.Ask(SubmitAllRequest(named.app(), 0)).error(), quor::wire::ERROR_NONE);
            return testing::Test::HasFailure() ? 1 : 0;
          }),
      0);
  // Its settings hold on as long as its program runs, and reach no other account.
  EXPECT_EQ(Traced(games), 0u);
  EXPECT_EQ(Traced(odd), 0u);
  EXPECT_EQ(Traced(mail), 1u);
  EXPECT_EQ(Traced(secret), 1u);
}

TEST_F(OwnAccount, WhatItKeepsIsForItsOwnLaterInstances) {
  if (!IsRoot()) return;  // there is one account
  Start();
  EXPECT_EQ(AsClient(kGames,
                     [](QuordClient& client) {
                       Request keep;
                       keep.mutable_keep()->set_app("late");
                       keep.mutable_keep()->set_rules("*=off");
                       EXPECT_EQ(client.Ask(keep).error(), quor::wire::ERROR_NONE);
                       const Response listed = client.Ask(ListRequest());
                       EXPECT_EQ(listed.waiting_size(), 1);
                       return listed.waiting(0).app() == "late" ? 0 : 1;
                     }),
            0);
  EXPECT_EQ(AsClient(kMail,
                     [](QuordClient& client) {
                       Request forget;
                       forget.mutable_forget_app()->set_name("late");
                       if (client.Ask(ListRequest()).waiting_size() != 0) return 1;
                       return client.Ask(forget).error() == quor::wire::ERROR_NONE ? 2 : 0;
                     }),
            0);
  const auto games = Steadily(kGames, "late"), mail = Steadily(kMail, "late");
  EXPECT_EQ(Traced(games), 0u);
  EXPECT_EQ(Traced(mail), 1u);
  QuordClient root;
  ASSERT_TRUE(root.Connect(Socket()) && root.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_TRUE(WaitFor([&] { return Listed(root) == "games/late 1 games\nmail/late 1 mail\n"; }))
      << Listed(root);
}

TEST_F(OwnAccount, WhatIsForAdministratorsIsRefused) {
  if (!IsRoot()) return;  // there is one account
  Start();
  EXPECT_EQ(AsClient(kGames,
                     [](QuordClient& client) {
                       Request status, reload, forward;
                       status.mutable_get_status();
                       reload.mutable_reload();
                       forward.mutable_forward()->set_stream("0123456789abcdef");
                       for (const Request& request : {status, reload, forward}) {
                         const Response answer = client.Ask(request);
                         EXPECT_EQ(answer.error(), quor::wire::ERROR_ACCESS);
                         EXPECT_EQ(answer.text(),
                                   "only root and the members of the group of this machine's "
                                   "service may do that");
                       }
                       return testing::Test::HasFailure() ? 1 : 0;
                     }),
            0);
  QuordClient root;
  ASSERT_TRUE(root.Connect(Socket()) && root.Hello(quor::wire::ROLE_CONFIGURE));
  Request status;
  status.mutable_get_status();
  EXPECT_EQ(root.Ask(status).status().pid(), static_cast<std::uint32_t>(quord.Pid()));
  const std::string games = "setpriv --reuid 5 --regid 5 --clear-groups";
  const auto asGames = [&](const std::string& command) {
    return WaitForExit(quord.Spawn({command, "--socket-dir", Place()}, games));
  };
  EXPECT_EQ(asGames("status"), 0);
  EXPECT_TRUE(quord.Says(", socket " + Socket() + "\n  no applications"));
  EXPECT_EQ(quord.Log().find("(process "), std::string::npos);
  EXPECT_EQ(asGames("stop"), 1);
  EXPECT_TRUE(quord.Says("only root and the service manager end the service of this machine"));
  EXPECT_EQ(asGames("reload"), 1);
}

TEST_F(OwnAccount, AMemberOfTheGroupSeesAllAndANameAloneIsGoodWhileItIsTheOnlyOne) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Steadily(kGames, "shop"), mail = Steadily(kMail, "shop"),
             other = Steadily(kMail, "orders");
  Start({"--group", "users"});
  for (const auto* const program : {&games, &mail, &other}) EXPECT_EQ(Traced(*program), 1u);
  const gid_t users = 100;
  const pid_t member = fork();
  if (member == 0) {
    if (setgroups(1, &users) != 0 || setresgid(kNameless, kNameless, kNameless) != 0 ||
        setresuid(kNameless, kNameless, kNameless) != 0)
      _exit(90);
    QuordClient client;
    if (!client.Connect(Socket()) || !client.Hello(quor::wire::ROLE_CONFIGURE)) _exit(91);
    const std::string all = "games/shop 1 games\nmail/orders 1 mail\nmail/shop 1 mail\n";
    if (!WaitFor([&] { return Listed(client) == all; })) _exit(1);
    const Response several = client.Ask(OpenAppRequest("shop"));
    if (several.text() != "several accounts have it: write one of games/shop, mail/shop") _exit(2);
    const Response one = client.Ask(OpenAppRequest("orders"));
    if (one.app().name() != "mail/orders") _exit(3);
    if (client.Ask(SubmitAllRequest(one.app(), 0)).error() != 0) _exit(4);
    const Response none = client.Ask(OpenAppRequest("none"));
    if (none.text().find("write ACCOUNT/none") == std::string::npos) _exit(5);
    if (client.Ask(OpenAppRequest("no-such-account/x")).error() == 0) _exit(6);
    if (client.Ask(OpenAppRequest("games/later")).error() != 0) _exit(7);
    // A program writes its file with its own rights.
    const Response file = client.Ask(SinkRequest("mail/orders", 0, "/tmp/x.trc"));
    if (file.error() != quor::wire::ERROR_ACCESS) _exit(8);
    if (client.Ask(SinkRequest("mail/orders", 1, "localhost")).error() != 0) _exit(9);
    _exit(0);
  }
  EXPECT_EQ(WaitForExit(member), 0);
  EXPECT_EQ(Traced(other), 0u);
  EXPECT_EQ(AsClient(kMail,
                     [](QuordClient& client) {
                       const Response opened = client.Ask(OpenAppRequest("orders"));
                       if (opened.error() != 0) return 1;
                       return client.Ask(SinkRequest("orders", 0, "/tmp/x.trc")).error() == 0 ? 0
                                                                                              : 2;
                     }),
            0);
}

}  // namespace
