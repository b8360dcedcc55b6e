// The names of a hub: one space of 16-bit ids for all kinds of names and all streams.
//
// Shape    Text to id and back. Id 0 is the empty text. When all ids or the memory for texts are
//          used up, every further text gets kOverflow, whose text says so: never a wrong name.
// Owner    Keeps its own copies. Returned texts are valid until Clear.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "quor/hub/name_share.h"
#include "records/record_layout.h"

class HubNames {
 public:
  static constexpr HubNameId kOverflow{65535};
  static constexpr std::size_t kTextBytesMax = 64u << 20;

  HubNames() { Clear(); }

  // Enters the text if it is new. Cut at 65,535 bytes. `share`: of an account, none for the hub's
  // own names. When it is used up, the text gets kOverflow.
  HubNameId IdOf(std::string_view text, NameShare* share = nullptr);
  std::string_view Text(HubNameId id) const;
  // The whole record, with its tag.
  std::size_t RecordBytes(HubNameId id) const { return kNameRecordBytes + Text(id).size(); }
  void AppendRecord(HubNameId id, std::vector<std::uint8_t>& to) const;

  std::shared_ptr<NameShare> ShareOf(uid_t account);
  bool IsFull() const { return m_full; }
  std::size_t Count() const { return m_texts.size(); }
  // Ids are valid only within one generation. Clear begins the next.
  std::uint32_t Generation() const { return m_generation; }
  void Clear();

 private:
  std::deque<std::string> m_texts;  // by id; a deque, because m_ids refers to its strings
  std::unordered_map<std::string_view, HubNameId> m_ids;
  std::map<uid_t, std::shared_ptr<NameShare>> m_shares;
  std::size_t m_bytes = 0;
  std::uint32_t m_generation = 0;
  bool m_full = false;
};

// The names of one source by its own ids, and their ids in a hub. For the hub that it forwards to,
// a machine is an application: the ids of its hub are the source's own ids there.
class SourceNames {
 public:
  SourceNames() : m_version(NextVersion()) {}

  // Entering an id again replaces its text.
  void Enter(AppNameId own, std::string_view text);
  bool Knows(AppNameId own) const { return m_texts.contains(own); }
  std::string TextOf(AppNameId own) const;
  // REQUIRES: Follow(hub) since the hub's last Clear. False: the source never entered this id.
  bool Find(AppNameId own, HubNames& hub, HubNameId& id) {
    Page* const page = PageOf(own).get();
    const std::uint32_t known = page ? EntryOf(*page, own) : kUnknown;
    if (known == kUnknown) return Look(own, hub, id);
    id = static_cast<HubNameId>(known);
    return true;
  }
  // Of a source whose account is shown: the same for the text of a process, with the account.
  // `pid`: see PidText.
  void SetAccount(std::string account, std::uint32_t pid) {
    m_account = std::move(account);
    m_pid = pid;
  }
  void SetShare(std::shared_ptr<NameShare> share) { m_share = std::move(share); }
  NameShare* Share() const { return m_share.get(); }
  const std::string& Account() const { return m_account; }
  bool FindPid(AppNameId own, HubNames& hub, HubNameId& id);
  // Forgets the ids of another hub or generation. True when it did.
  bool Follow(const HubNames& hub);
  std::size_t TextBytes() const { return m_textBytes; }
  // Changes whenever an id that was found before may have another meaning. No two sources ever have
  // the same version.
  std::uint64_t Version() const { return m_version; }

 private:
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
  // Most sources use few ids: a page is made when its first id is used.
  static constexpr std::size_t kPageIds = 256;
  using Page = std::array<std::uint32_t, kPageIds>;
  static std::uint64_t NextVersion();
  std::unique_ptr<Page>& PageOf(AppNameId own) { return m_pages[IdNumber(own) / kPageIds]; }
  static std::uint32_t& EntryOf(Page& page, AppNameId own) {
    return page[IdNumber(own) % kPageIds];
  }
  bool Look(AppNameId own, HubNames& hub, HubNameId& id);

  std::array<std::unique_ptr<Page>, kNameIds / kPageIds> m_pages;
  std::unordered_map<AppNameId, std::string> m_texts;
  std::unordered_map<AppNameId, HubNameId> m_pids;  // with the account
  std::string m_account;
  std::uint32_t m_pid = 0;             // with the account
  std::shared_ptr<NameShare> m_share;  // none: no bound
  std::size_t m_textBytes = 0;
  const HubNames* m_hub = nullptr;
  std::uint32_t m_generation = 0;
  std::uint64_t m_version;
};
