#include "quor/hub/hub_names.h"

#include <algorithm>

#include "quor/accounts/accounts.h"
#include "records/name_record.h"

namespace {

constexpr std::string_view kOverflowText = "(no more names: 65,535 are in use)";

}  // namespace

HubNameId HubNames::IdOf(std::string_view text, NameShare* share) {
  text = text.substr(0, kLongestText);
  if (const auto known = m_ids.find(text); known != m_ids.end()) return known->second;
  if (m_texts.size() >= IdNumber(kOverflow) || m_bytes + text.size() > kTextBytesMax) {
    m_full = true;
    return kOverflow;
  }
  if (share && !share->Take(m_generation, text.size())) return kOverflow;
  const auto id = static_cast<HubNameId>(m_texts.size());
  m_texts.emplace_back(text);
  m_bytes += text.size();
  m_ids.emplace(m_texts.back(), id);
  return id;
}

std::shared_ptr<NameShare> HubNames::ShareOf(uid_t account) {
  std::shared_ptr<NameShare>& share = m_shares[account];
  if (!share) share = std::make_shared<NameShare>();
  return share;
}

std::string_view HubNames::Text(HubNameId id) const {
  if (id == kOverflow) return kOverflowText;
  return IdNumber(id) < m_texts.size() ? std::string_view(m_texts[IdNumber(id)])
                                       : std::string_view();
}

void HubNames::AppendRecord(HubNameId id, std::vector<std::uint8_t>& to) const {
  AppendNameRecord(to, id, Text(id));
}

void HubNames::Clear() {
  m_ids.clear();
  m_texts.clear();
  m_bytes = 0;
  m_full = false;
  ++m_generation;
  // The names of a loss report must never overflow.
  for (const std::string_view text : {"", "Quor", "Loss"}) IdOf(text);
}

std::uint64_t SourceNames::NextVersion() {
  static std::uint64_t last = 0;
  return ++last;
}

void SourceNames::Enter(AppNameId own, std::string_view text) {
  std::string& entry = m_texts[own];
  m_textBytes += text.size() - entry.size();
  entry = text;
  if (Page* const page = PageOf(own).get()) EntryOf(*page, own) = kUnknown;
  m_pids.erase(own);
  m_version = NextVersion();
}

std::string SourceNames::TextOf(AppNameId own) const {
  const auto known = m_texts.find(own);
  return known == m_texts.end() ? std::string() : known->second;
}

bool SourceNames::Look(AppNameId own, HubNames& hub, HubNameId& id) {
  const auto known = m_texts.find(own);
  if (known == m_texts.end()) return false;
  id = hub.IdOf(known->second, m_share.get());
  std::unique_ptr<Page>& page = PageOf(own);
  if (!page) {
    page = std::make_unique<Page>();
    page->fill(kUnknown);
  }
  EntryOf(*page, own) = IdNumber(id);
  return true;
}

bool SourceNames::FindPid(AppNameId own, HubNames& hub, HubNameId& id) {
  const auto made = m_pids.find(own);
  if (made != m_pids.end()) return id = made->second, true;
  const auto known = m_texts.find(own);
  if (known == m_texts.end()) return false;
  id = hub.IdOf(PidText(known->second, m_pid, m_account), m_share.get());
  m_pids[own] = id;
  return true;
}

bool SourceNames::Follow(const HubNames& hub) {
  if (m_hub == &hub && m_generation == hub.Generation()) return false;
  for (const std::unique_ptr<Page>& page : m_pages)
    if (page) page->fill(kUnknown);
  m_pids.clear();
  m_version = NextVersion();
  m_hub = &hub;
  m_generation = hub.Generation();
  return true;
}
