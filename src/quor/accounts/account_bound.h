// How much of something one account may have, so that none exhausts what all share.
//
// Shape    At a service of one account there is no bound. What is refused is counted. The log says
//          so at the first refusal of an account, and again after it had less than the bound.
// Errors   Take is false at the bound.
// Threads  One.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "quor/accounts/accounts.h"

class AccountBound {
 public:
  // `what`: in the log, as "running applications".
  AccountBound(std::string what, std::size_t most) : m_what(std::move(what)), m_most(most) {}

  bool Take(const Account& account);
  void Give(const Account& account);
  std::uint64_t Refused() const { return m_refused; }
  // "an account has at most 32 clients"
  std::string Why() const;

 private:
  struct Used {
    std::size_t count = 0;
    bool isReported = false;
  };
  const std::string m_what;
  const std::size_t m_most;
  std::map<uid_t, Used> m_used;
  std::uint64_t m_refused = 0;
};
