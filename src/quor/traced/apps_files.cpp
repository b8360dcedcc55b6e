// What the folder of the segments holds: segments, rests of segments, and what is neither.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/fail_with.h"
#include "quor/log/log.h"
#include "quor/traced/apps.h"

namespace {

constexpr std::chrono::seconds kLookAgain{1};

// Of this process or of the machine: it says nothing about the file.
bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM;
}

}  // namespace

// Nobody can make a file that belongs to somebody else.
Account Apps::AccountOf(int file) const {
  struct stat status {};
  if (!m_accounts || fstat(file, &status) != 0) return {};
  return m_accounts->Of(status.st_uid);
}

std::optional<uid_t> Apps::BoundOf(const Account& account) const {
  return m_accounts ? std::optional(account.uid) : std::nullopt;
}

void Apps::OnFile(const std::string& name) {
  const int file = m_watch.Folder().OpenFile(name);
  SegmentMap segment;
  FinishedSegment rest;
  struct stat status {};
  const char* reason = "";
  if (file < 0 && IsShortage(errno)) return LookAgain(name, SystemReason());
  if (file < 0 && errno != ENOENT) RefuseFile(name, "it is no file of one account alone");
  if (file < 0 || fstat(file, &status) != 0) return;
  const Key key{status.st_dev, status.st_ino};
  if (const auto known = m_running.find(key); known != m_running.end()) {
    known->second->SetFile(name);
    close(file);
  } else if (IsBroken(key)) {
    if (!m_kept.Has(key)) m_kept.Keep(name, key, nullptr, BoundOf(AccountOf(file)));
    close(file);
  } else if (ReadFinishedSegment(file, &rest) && IsUnowned(file)) {
    OnFinishedSegment(name, key, rest, file);
    close(file);
  } else if (segment.Open(file, &reason)) {
    Find(name, std::move(segment));
  } else if (IsShortage(errno)) {
    LookAgain(name, SystemReason());
  } else {
    SkipSegment(name, reason);
  }
}

// One account may have used up what all need, and goes on using it. So the first file is reported
// in the log, and there need not be an end of an instance before the next look.
void Apps::LookAgain(const std::string& name, const std::string& why) {
  // The end of an instance since the first file of this second may have taken the mark.
  m_skippedSome = true;
  if (std::exchange(m_looksAgain, true)) return;
  LeaveForLater(name, why);
  m_lookTimer.expires_after(kLookAgain);
  m_lookTimer.async_wait([this](const std::error_code& failed) {
    if (failed) return;
    m_looksAgain = false;
    ReportSkipped();
  });
}

void Apps::LeaveForLater(const std::string& name, const std::string& why) {
  m_skippedSome = true;
  Log(LogLevel::Warning, "segment " + name + " is not read yet: " + why);
}

// Now there may be room for one that was left out.
void Apps::ReportSkipped() {
  if (std::exchange(m_skippedSome, false)) m_watch.ReportAllSoon();
}

// A file whose owner still lives is not a rest, whatever its content says.
void Apps::OnFinishedSegment(const std::string& name, const Key& key, const FinishedSegment& rest,
                             int file) {
  if (!IsPossible(rest, file)) {
    Log(LogLevel::Warning, "segment " + name + " is removed: its count of traces is impossible");
    m_watch.Folder().Remove(name, key.first, key.second);
  } else if (!m_kept.Has(key)) {
    m_kept.Keep(name, key, SourceOf(rest, file), BoundOf(AccountOf(file)));
  }
}

// Null: no monitor needs to learn of it.
std::shared_ptr<Source> Apps::SourceOf(const FinishedSegment& rest, int file) {
  if (rest.end == SegmentEnd::Here)
    return Remember(rest, m_machine, file, AccountOf(file), HubFor({}, {}));
  if (rest.forwardTarget.empty() || rest.forwarded >= rest.served) return nullptr;
  Hub& hub = m_router.HubForMachine(rest.forwardTarget, AccountOf(file));
  return hub.Machine() == rest.forwardTarget ? Remember(rest, m_machine, file, AccountOf(file), hub)
                                             : nullptr;
}

// At the service of a machine an account could fill the folder with what is no segment.
void Apps::RefuseFile(const std::string& name, const std::string& reason) {
  const auto owner = m_accounts ? m_watch.Folder().OwnerOf(name) : std::nullopt;
  if (!owner) return;
  if (m_strange.insert(*owner).second)
    Log(LogLevel::Warning, "account " + m_accounts->Of(*owner).name +
                               " has made a segment that is not read: " + reason +
                               "; it is removed, and so are others");
  m_watch.Folder().RemoveAnything(name);
}

// Reports it once. A file with a live owner may be of another version.
void Apps::SkipSegment(const std::string& name, const std::string& reason) {
  if (m_accounts) return RefuseFile(name, reason);
  if (m_unreadable.insert(name).second)
    Log(LogLevel::Warning, "segment " + name + " is not read: " + reason);
  if (m_watch.Folder().RemoveUnowned(name))
    m_unreadable.erase(name);
  else
    m_skippedSome = true;
}

void Apps::Find(const std::string& name, SegmentMap segment) {
  const Key key = KeyOf(segment);
  LinkHello hello;
  hello.app = AppNameIn(segment);
  const std::uint32_t pid = segment.Layout().pid;
  const Account account = AccountOf(segment.Descriptor());
  AppArrival arrival{std::move(hello), std::move(segment), OwnedDescriptor(m_io), pid, {}, account};
  std::string why;
  const std::shared_ptr<RunningApp> app = Add(key, arrival, &why);
  // Its owner may bring it over its link when there is room.
  if (!app && m_accounts && m_running.size() < kInstancesMax)
    return m_watch.Folder().RemoveAnything(name);
  if (!app) return LeaveForLater(name, why);
  app->SetFile(name);
  app->StartWithoutLink(m_holdsBack);
}
