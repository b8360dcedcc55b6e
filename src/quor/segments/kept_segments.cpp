#include "quor/segments/kept_segments.h"

#include <utility>

namespace {

// Longer than a silent monitor is kept before it is disconnected.
constexpr std::chrono::seconds kKept{12};

}  // namespace

void KeptSegments::Keep(const std::string& name, const Key& key, std::shared_ptr<Source> source,
                        std::optional<uid_t> account) {
  Kept kept{{}, name, key, std::move(source)};
  if (account && m_ofAccount[*account] >= kKeptOfAccountMax) return Remove(kept);
  if (m_keys.emplace(key, account).second && account) ++m_ofAccount[*account];
  Push(std::move(kept));
  if (m_kept.size() == 1) RemoveDue();
}

void KeptSegments::Push(Kept kept) {
  kept.until = std::chrono::steady_clock::now() + kKept;
  m_kept.push_back(std::move(kept));
}

void KeptSegments::Clear() {
  m_kept.clear();
  m_keys.clear();
  m_ofAccount.clear();
}

// Asked once more after the last of it was sent, because the monitor may not have received it yet.
bool KeptSegments::IsWanted(Kept& kept) {
  const bool isUnderWay = kept.source && kept.source->IsUnderWay();
  return std::exchange(kept.wasUnderWay, isUnderWay) || isUnderWay;
}

void KeptSegments::Remove(const Kept& kept) {
  if (kept.source) kept.source->noteForwarded = nullptr;
  m_watch.Folder().Remove(kept.name, kept.key.first, kept.key.second);
}

void KeptSegments::RemoveDue() {
  const auto now = std::chrono::steady_clock::now();
  while (!m_kept.empty() && m_kept.front().until <= now) {
    Kept kept = std::move(m_kept.front());
    m_kept.pop_front();
    if (m_kept.size() < kKeptLongMax && IsWanted(kept)) {
      Push(std::move(kept));
      continue;
    }
    Remove(kept);
    const auto known = m_keys.find(kept.key);
    if (known == m_keys.end()) continue;
    const auto account = known->second;
    m_keys.erase(known);
    if (account && --m_ofAccount[*account] == 0) m_ofAccount.erase(*account);
  }
  if (m_kept.empty()) return;
  m_timer.expires_at(m_kept.front().until);
  m_timer.async_wait([this](const std::error_code& error) {
    if (!error) RemoveDue();
  });
}
