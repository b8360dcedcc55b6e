// A real service of a machine in a place of its own, and programs of several accounts.
#pragma once

#include <sys/stat.h>

#include <memory>

#include "quord_client.h"
#include "support/as_account.h"

// Accounts that every system has, and one that none has.
constexpr uid_t kGames = 5, kMail = 8, kNameless = 65001, kMachineUid = 1;

class MachineFixture : public ::testing::Test {
 protected:
  MachineFixture() {
    chmod(m_above.Path().c_str(), 0755);
    unsetenv("QUOR_SOCKET");
    setenv("QUOR_MACHINE_SOCKET", Socket().c_str(), 1);
    // A process that has given up rights cannot be looked at by its own leak checker.
    setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
  }
  ~MachineFixture() override { unsetenv("QUOR_MACHINE_SOCKET"); }
  static bool IsRoot() { return geteuid() == 0; }
  std::string Place() const { return m_above.File("quor"); }
  std::string Socket() const { return Place() + "/quord.sock"; }
  void Start(std::vector<std::string> further = {}) {
    further.insert(further.begin(), {"--machine", "--user", "daemon"});
    quord.Start(further);
  }
  // A program of that account, which begins when the service is there. Fork it before there are
  // connections or threads.
  std::unique_ptr<TracedChild> Program(uid_t account, std::function<int(TracedChild&)> body) {
    return std::make_unique<TracedChild>(
        [account, place = Place() + "/segments", body = std::move(body)](TracedChild& self) {
          if (account != 0) BecomeAccount(account);
          return WaitFor([&] { return access(place.c_str(), X_OK) == 0; }) ? body(self) : 92;
        });
  }
  // A client of that account: what it asks, in a process of its own.
  int AsClient(uid_t account, const std::function<int(QuordClient&)>& body) {
    return RunAsAccount(account, [&] {
      QuordClient client;
      if (!client.Connect(Socket()) || !client.Hello(quor::wire::ROLE_CONFIGURE)) return 91;
      return body(client);
    });
  }

 private:
  TempDir m_above;  // outlives the service

 protected:
  QuordProcess quord;
};

inline Request ListRequest() {
  Request request;
  request.mutable_list_apps();
  return request;
}
// "name instances account" of each application.
inline std::string Listed(QuordClient& client) {
  const Response response = client.Ask(ListRequest());
  std::string text;
  for (int i = 0; i < response.app_names_size(); ++i)
    text += response.app_names(i) + " " + std::to_string(response.app_instances(i)) + " " +
            (i < response.accounts_size() ? response.accounts(i) : "-") + "\n";
  return text;
}
