// The accounts whose programs the service of a machine traces.
//
// Shape    A service of one account knows none: all texts here are empty there. At the service of a
//          machine an account has a name of printable ASCII without blanks and slashes; where it
//          has no such name, or another account has it too, its number is its name.
// Owner    Keeps the name of each account until its end. Where the system knows none, which it also
//          says when it cannot ask, it is asked again after a while.
// Errors   None.
// Threads  One. The first question about an account may ask a directory of the network.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// Of a program or a client, by the kernel's account and never by what it says of itself.
struct Account {
  uid_t uid = static_cast<uid_t>(-1);
  std::string name = {};  // empty: a service of one account
};

class Accounts {
 public:
  // "" if it has no name.
  using Ask = std::function<std::string(uid_t)>;
  static std::string AskSystem(uid_t uid);

  // `all`: of a machine.
  explicit Accounts(bool all, Ask ask = AskSystem,
                    std::chrono::milliseconds askAgain = std::chrono::seconds(30))
      : m_all(all), m_ask(std::move(ask)), m_askAgain(askAgain) {}
  bool AreAll() const { return m_all; }
  const Account& Of(uid_t uid);
  // Is there an account of this name? A number is always one.
  bool IsName(const std::string& name) const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Known {
    Account account;
    std::optional<Clock::time_point> askAgain;  // not before; none: never
  };
  const bool m_all;
  const Ask m_ask;
  const std::chrono::milliseconds m_askAgain;
  std::map<uid_t, Known> m_known;
};

// "alice/shop": the name under which the catalogue has an application of this account.
std::string KeyOf(const Account& account, std::string_view app);
// Of such a key. REQUIRES: it is one of a service of a machine.
std::string_view AccountIn(std::string_view key);
std::string_view AppIn(std::string_view key);

// "4711 alice": the process as a trace names it. `said`: by the program itself, in its own name
// space. If that is no number, `pid` stands there. So the account is what follows the only blank.
std::string PidText(std::string_view said, std::uint32_t pid, std::string_view account);
