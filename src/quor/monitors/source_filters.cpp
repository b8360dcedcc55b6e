#include "quor/monitors/source_filters.h"

#include <algorithm>

#include "base/thread_time.h"
#include "where/source/where_at_source.h"

namespace {

// So deep in debt an account makes no further text. Texts that are asked take it down to none.
constexpr std::int64_t kDebtMaxNs = WorkShare::kBurstNs;

std::optional<uid_t> IdOf(const Account& account) {
  return account.name.empty() ? std::nullopt : std::optional(account.uid);
}

}  // namespace

SourceFilters::Key SourceFilters::KeyOf(const Account& account, const std::string& text) {
  return {IdOf(account), text};
}

const std::shared_ptr<FilterAccount>& SourceFilters::SharesOf(const Account& account) {
  std::shared_ptr<FilterAccount>& shares = m_shares[IdOf(account)];
  if (!shares)
    shares = std::make_shared<FilterAccount>(
        account.name.empty() ? "a monitor" : "a monitor of account " + account.name);
  return shares;
}

std::chrono::nanoseconds SourceFilters::WaitFor(const Account& account, const std::string& text) {
  if (m_filters.contains(KeyOf(account, text))) return {};
  const auto now = WorkShare::Clock::now();
  return std::chrono::nanoseconds(
      std::max(SharesOf(account)->share.WaitFor(-kDebtMaxNs, now), m_means.making.WaitFor(1, now)));
}

std::shared_ptr<SourceFilter> SourceFilters::Open(const Account& account, const std::string& text,
                                                  WhereError& error) {
  const Key key = KeyOf(account, text);
  if (const auto known = m_filters.find(key); known != m_filters.end())
    if (auto filter = known->second.lock()) return filter;
  const auto beganAt = WorkShare::Clock::now();
  const std::uint64_t began = ThreadNanoseconds();
  auto made = Make(account, key, error);
  SharesOf(account)->share.Worked(static_cast<std::int64_t>(ThreadNanoseconds() - began));
  // The others wait for all of the time, also for that in which this thread has no processor.
  m_means.making.Worked(std::chrono::nanoseconds(WorkShare::Clock::now() - beganAt).count());
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
  auto filter = std::make_shared<SourceFilter>(std::move(program), m_means, SharesOf(account),
                                               [this, account, key] { OnEnd(account, key); });
  m_filters[key] = filter;
  return filter;
}

void SourceFilters::OnEnd(const Account& account, const Key& key) {
  m_bound.Give(account);
  m_filters.erase(key);
  if (m_filters.empty()) m_means.known.Forget();
}
