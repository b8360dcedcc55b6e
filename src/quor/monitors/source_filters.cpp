#include "quor/monitors/source_filters.h"

#include "base/thread_time.h"
#include "where/source/where_at_source.h"

namespace {

constexpr unsigned kPartOfAccount = 4;

}  // namespace

const std::shared_ptr<WorkShare>& SourceFilters::ShareOf(const std::optional<uid_t>& account) {
  std::shared_ptr<WorkShare>& share = m_shares[account];
  if (!share) share = std::make_shared<WorkShare>(kPartOfAccount);
  return share;
}

std::shared_ptr<SourceFilter> SourceFilters::Open(const Account& account, const std::string& text,
                                                  WhereError& error) {
  Key key{{}, text};
  if (!account.name.empty()) key.first = account.uid;
  if (const auto known = m_filters.find(key); known != m_filters.end())
    if (auto filter = known->second.lock()) return filter;
  const std::uint64_t began = ThreadNanoseconds();
  auto made = Make(account, key, error);
  ShareOf(key.first)->Worked(static_cast<std::int64_t>(ThreadNanoseconds() - began));
  return made;
}

std::shared_ptr<SourceFilter> SourceFilters::Make(const Account& account, const Key& key,
                                                  WhereError& error) {
  std::optional<WhereExpr> expr = ParseAtSource(key.second, error);
  WhereProgramPtr program = expr ? WhereProgram::Compile(std::move(*expr), error) : nullptr;
  if (!program) return nullptr;
  if (!m_bound.Take(account)) {
    error = {0, 0, m_bound.Why(), {}};
    return nullptr;
  }
  const std::string label =
      account.name.empty() ? "a monitor" : "a monitor of account " + account.name;
  auto filter = std::make_shared<SourceFilter>(std::move(program), m_means, ShareOf(key.first),
                                               label, [this, account, key] {
                                                 m_bound.Give(account);
                                                 m_filters.erase(key);
                                               });
  m_filters[key] = filter;
  return filter;
}
