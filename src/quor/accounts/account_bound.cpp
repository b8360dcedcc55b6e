#include "quor/accounts/account_bound.h"

#include <utility>

#include "quor/log/log.h"

bool AccountBound::Take(const Account& account) {
  if (account.name.empty()) return true;
  Used& used = m_used[account.uid];
  if (used.count < m_most) {
    ++used.count;
    return true;
  }
  ++m_refused;
  if (!std::exchange(used.isReported, true))
    Log(LogLevel::Warning, "account " + account.name + " has " + std::to_string(m_most) + " " +
                               m_what + ": further ones are refused (" + std::to_string(m_refused) +
                               " of all accounts so far)");
  return false;
}

void AccountBound::Give(const Account& account) {
  const auto used = m_used.find(account.uid);
  if (account.name.empty() || used == m_used.end()) return;
  --used->second.count;
  if (used->second.count < m_most / 2) used->second.isReported = false;
  if (used->second.count == 0) m_used.erase(used);
}

std::string AccountBound::Why() const {
  return "an account has at most " + std::to_string(m_most) + " " + m_what;
}
