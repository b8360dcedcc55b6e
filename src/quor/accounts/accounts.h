// The accounts whose programs the service of a machine traces.
//
// Shape    A service of one account knows none: all texts here are empty there. At the service of a
//          machine an account has a name of printable ASCII without blanks and slashes; where it
//          has no such name, or another account has it too, its number is its name.
// Owner    Keeps what it was told of each account until its end.
// Errors   None.
// Threads  One. The first question about an account may ask a directory of the network.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

// Of a program or a client, by the kernel's account and never by what it says of itself.
struct Account {
  uid_t uid = static_cast<uid_t>(-1);
  std::string name = {};  // empty: a service of one account
};

class Accounts {
 public:
  // `all`: of a machine.
  explicit Accounts(bool all) : m_all(all) {}
  bool AreAll() const { return m_all; }
  const Account& Of(uid_t uid);
  // Is there an account of this name? A number is always one.
  bool IsName(const std::string& name) const;

 private:
  const bool m_all;
  std::map<uid_t, Account> m_known;
};

// "alice/shop": the name under which the catalogue has an application of this account.
std::string KeyOf(const Account& account, std::string_view app);
// Of such a key. REQUIRES: it is one of a service of a machine.
std::string_view AccountIn(std::string_view key);
std::string_view AppIn(std::string_view key);

// "4711 alice": the process as a trace names it. The account is what follows the last blank,
// because blanks and control characters of the program's own text are replaced.
std::string PidText(std::string_view pid, std::string_view account);
