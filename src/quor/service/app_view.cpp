#include "quor/service/app_view.h"

#include "base/fail_with.h"

AppView::AppView(Accounts& accounts, const Catalogue& known, const ViewPeer& peer)
    : m_accounts(accounts),
      m_known(known),
      m_peer(peer),
      m_own(peer.isRestricted && peer.uid ? accounts.Of(*peer.uid).name : "") {}

std::optional<std::string> AppView::KeyOf(const std::string& name, bool isNew,
                                          std::string* why) const {
  if (!m_accounts.AreAll() || name.empty()) return name;
  if (m_peer.isRestricted) return m_own + "/" + name;
  const bool isWhole = !AppIn(name).empty() && m_accounts.IsName(std::string(AccountIn(name)));
  if (isWhole || m_known.Has(name)) return name;
  std::string reason;
  auto one = TheOneNamed(name, &reason);
  if (one || !reason.empty()) return one ? one : FailWith(why, reason, std::nullopt);
  if (!isNew) return FailWith(why, "no such application is known", std::nullopt);
  return FailWith(why,
                  "this service has several accounts: write ACCOUNT/" + name +
                      ", because no application of that name is known",
                  std::nullopt);
}

// Those that run go before those that ran once.
std::optional<std::string> AppView::TheOneNamed(const std::string& name, std::string* why) const {
  for (const auto& keys : {m_known.Registered(), m_known.Names()}) {
    std::string all;
    std::optional<std::string> one;
    for (const std::string& key : keys) {
      if (AppIn(key) != name) continue;
      all += (all.empty() ? "" : ", ") + key;
      one = key;
    }
    if (one && all != *one)
      return FailWith(why, "several accounts have it: write one of " + all, std::nullopt);
    if (one) return one;
  }
  return std::nullopt;
}

bool AppView::Sees(const std::string& key) const {
  return !m_peer.isRestricted || AccountIn(key) == m_own;
}

std::string AppView::NameOf(const std::string& key) const {
  return m_peer.isRestricted ? std::string(AppIn(key)) : key;
}

std::string AppView::AccountOf(const std::string& key) const {
  return m_accounts.AreAll() ? std::string(AccountIn(key)) : std::string();
}

bool AppView::MayNameFile(const std::string& key) const {
  if (!m_accounts.AreAll() || m_peer.uid == 0u) return true;
  return m_peer.uid && m_accounts.Of(*m_peer.uid).name == AccountIn(key);
}
