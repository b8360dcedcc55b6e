// What the files in the folder of the segments lead to.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/fail_with.h"
#include "quor/log/log.h"
#include "quor/traced/apps.h"

namespace {

// Of this service: the file may be as good as any.
bool IsShortage(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM;
}

}  // namespace

void Apps::OnFile(const std::string& name) {
  const int file = m_watch.Folder().OpenFile(name);
  SegmentMap segment;
  FinishedSegment rest;
  struct stat status {};
  const char* reason = "";
  if (file < 0 && IsShortage(errno)) return LeaveForLater(name, SystemReason());
  if (file < 0 && errno != ENOENT) RefuseFile(name, "it is no file of one account alone");
  if (file < 0 || fstat(file, &status) != 0) return;
  const Key key{status.st_dev, status.st_ino};
  if (const auto known = m_running.find(key); known != m_running.end()) {
    known->second->SetFile(name);
    close(file);
  } else if (IsBroken(key)) {
    if (!m_kept.Has(key)) m_kept.Keep(name, key, nullptr);
    close(file);
  } else if (ReadFinishedSegment(file, &rest) && IsUnowned(file)) {
    OnFinishedSegment(name, key, rest, file);
    close(file);
  } else if (segment.Open(file, &reason)) {
    Find(name, std::move(segment));
  } else if (IsShortage(errno)) {
    LeaveForLater(name, SystemReason());
  } else {
    SkipSegment(name, reason);
  }
}

// A file whose owner still lives is not a rest, whatever its content says.
void Apps::OnFinishedSegment(const std::string& name, const Key& key, const FinishedSegment& rest,
                             int file) {
  if (!IsPossible(rest, file)) {
    Log(LogLevel::Warning, "segment " + name + " is removed: its count of traces is impossible");
    m_watch.Folder().Remove(name, key.first, key.second);
  } else if (!m_kept.Has(key)) {
    m_kept.Keep(name, key, SourceOf(rest, file));
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

void Apps::LeaveForLater(const std::string& name, const std::string& why) {
  m_skippedSome = true;
  Log(LogLevel::Warning, "segment " + name + " is not read yet: " + why);
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

// Now there may be room for one that was left out.
void Apps::ReportSkipped() {
  if (std::exchange(m_skippedSome, false)) m_watch.ReportAll();
}
