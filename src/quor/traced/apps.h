// All running applications of this machine and their settings.
//
// Shape    An application is found in two ways: by the file of its segment, as soon as the file
//          exists, and by its link. The file's device and inode tell that both are one instance.
// Owner    Borrows hubs through its router, which outlives it. Removes the file of a segment when
//          all its traces have been taken.
// Errors   A hello that cannot be accepted is refused with a reason.
// Threads  The service's one thread.
#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <map>
#include <set>

#include "quor/accounts/account_bound.h"
#include "quor/segments/kept_segments.h"
#include "quor/segments/segment_watch.h"
#include "quor/traced/machine_router.h"
#include "quor/traced/running_app.h"

class Apps final : public RunningApp::Host, public SegmentWatch::Finder {
 public:
  using Router = MachineRouter;
  static constexpr std::size_t kInstancesMax = 4096, kInstancesOfAccountMax = 1024;

  // `accounts`: null at a service of one account.
  Apps(asio::io_context& io, Catalogue& catalogue, Router& router, std::string machine,
       Accounts* accounts = nullptr)
      : m_io(io),
        m_catalogue(catalogue),
        m_router(router),
        m_machine(std::move(machine)),
        m_accounts(accounts),
        m_watch(io, *this, accounts != nullptr),
        m_kept(io, m_watch) {}

  // Watches for applications beside this socket from now on. Applications that died while no
  // service ran wait for ReleaseHeld.
  void Watch(const std::string& socketPath);
  // The same after the folder was made again.
  void WatchAnew(const std::string& socketPath);
  // The folder has changed: corrects it, or makes it again.
  void LookAtFolder(const std::string& socketPath);
  // A monitor has connected, or none will: the traces of dead applications are taken. `only`: of
  // this account.
  void ReleaseHeld(std::optional<uid_t> only = {});

  // An application has introduced itself. False and a reason: refused.
  bool Arrive(AppArrival arrival, std::string* why);
  // Stores it in the catalogue and passes it to the running instances.
  void Submit(CatalogueApp& app, const Catalogue::Submitted& what);
  bool Keep(CatalogueApp& app, const SettingsText& rules);
  bool ForgetWaiting(CatalogueApp& app);
  // Empty: it can be reached, or it is no machine.
  std::string WhySinkFails(const LinkSink& sink) const {
    return sink.kind == SinkKind::Socket ? m_router.WhyUnreachable(sink.name) : std::string();
  }
  struct FailingSink {
    std::string machine, why;
  };
  std::map<std::string, FailingSink> FailingSinks() const;  // of those that run, by application
  AppStart StartOf(const CatalogueApp& app) const;
  void CloseHandle(CatalogueApp& app, std::uint32_t pid);
  void EndGrace();
  void Stop();

  Catalogue& Known() { return m_catalogue; }
  std::size_t Running() const { return m_running.size(); }

 private:
  CatalogueApp* EntryFor(const Account& account, const std::string& name) override {
    return m_catalogue.Enter(::KeyOf(account, name));
  }
  std::vector<std::uint32_t> EnterTraces(CatalogueApp& entry, const TracedPoints&) override;
  std::uint32_t DefaultSettings() const override { return m_catalogue.DefaultSettings(); }
  Hub& HubFor(const Account& account, const LinkSink& sink) override;
  void OnBegan(RunningApp& app) override;
  void EndIn(CatalogueApp& entry, const RunningApp& app);
  void OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) override;
  void OnEnded(RunningApp& app) override;
  void Apply(const CatalogueApp& app, bool sink);
  void SendKept(const CatalogueApp& app);
  void OnFile(const std::string& name) override;
  void OnPlaceChanged() override { m_router.OnPlaceChanged(); }
  using Key = KeptSegments::Key;
  void OnFinishedSegment(const std::string& name, const Key& key, const FinishedSegment& rest,
                         int file);
  bool IsBroken(const Key& key) const;
  Account AccountOf(int file) const;
  bool IsOfAccount(const AppArrival& arrival, std::string* why) const;
  std::shared_ptr<Source> SourceOf(const FinishedSegment& rest, int file);
  void GiveMemoryBack();
  static Key KeyOf(const SegmentMap& segment) { return {segment.Device(), segment.Inode()}; }
  void Find(const std::string& name, SegmentMap segment);
  void SkipSegment(const std::string& name, const std::string& reason);
  void RefuseFile(const std::string& name, const std::string& reason);
  void LookAgain(const std::string& name, const std::string& why);
  void LeaveForLater(const std::string& name, const std::string& why);
  void ReportSkipped();
  std::optional<uid_t> BoundOf(const Account& account) const;
  std::shared_ptr<RunningApp> Add(const Key& key, AppArrival& arrival, std::string* why);

  asio::io_context& m_io;
  Catalogue& m_catalogue;
  Router& m_router;
  const std::string m_machine;
  Accounts* const m_accounts;
  AccountBound m_bound{"running applications", kInstancesOfAccountMax};
  SegmentWatch m_watch;
  KeptSegments m_kept;
  std::deque<Key> m_broken;  // segments that are no longer read
  asio::steady_timer m_trimTimer{m_io}, m_lookTimer{m_io};
  int m_endedSince = 0;  // instances that ended since memory was last given back
  std::map<Key, std::shared_ptr<RunningApp>> m_running;
  bool m_holdsBack = false, m_skippedSome = false, m_looksAgain = false, m_trimsSoon = false;
  std::set<std::string> m_unreadable;  // files with a live owner
  std::set<uid_t> m_strange;           // accounts that have made files that are no segments
};
