// The filter texts that monitors have handed over.
//
// Shape    Monitors of one account with an equal text share one filter. Each account has a share of
//          the thread for its filters, also for the making of them, and a bound on their number.
//          Whoever would make more of them than these shares allow waits.
// Owner    Outlives its filters.
// Threads  The service's one thread.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "quor/accounts/account_bound.h"
#include "quor/monitors/source_filter.h"
#include "where/text/where_parser.h"

class SourceFilters {
 public:
  static constexpr std::size_t kFiltersOfAccountMax = 16;

  explicit SourceFilters(HubNames& names) : m_means{names} {}
  SourceFilters(const SourceFilters&) = delete;
  SourceFilters& operator=(const SourceFilters&) = delete;

  // How long a client is to wait before it opens the text. Zero: not at all.
  std::chrono::nanoseconds WaitFor(const Account& account, const std::string& text);
  // Null: the text is not taken; the error says why, and where. `account`: of a client that is
  // restricted to its own, else none.
  std::shared_ptr<SourceFilter> Open(const Account& account, const std::string& text,
                                     WhereError& error);
  // What its filters share, whether or not it has any.
  const std::shared_ptr<FilterAccount>& SharesOf(const Account& account);
  std::size_t Count() const { return m_filters.size(); }
  std::size_t NamesHeld() const { return m_means.known.Map().size(); }

 private:
  using Key = std::pair<std::optional<uid_t>, std::string>;
  std::shared_ptr<SourceFilter> Make(const Account& account, const Key& key, WhereError& error);
  static Key KeyOf(const Account& account, const std::string& text);
  void OnEnd(const Account& account, const Key& key);

  FilterMeans m_means;
  AccountBound m_bound{"filter texts", kFiltersOfAccountMax};
  std::map<Key, std::weak_ptr<SourceFilter>> m_filters;
  // Kept, so that a client that comes anew has no new share.
  std::map<std::optional<uid_t>, std::shared_ptr<FilterAccount>> m_shares;
};
