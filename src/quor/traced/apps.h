// All running applications of this machine and what is configured for them.
//
// Shape    An application comes twice: by the file of its segment, which is found as soon as it is
//          there, and by its link. What both bring is one instance, by the file's device and inode.
// Owner    Borrows hubs through its router, which outlives it. Removes the file of a segment that
//          has been taken to its end.
// Errors   A hello that cannot be taken is refused in words.
// Threads  The service's one thread.
#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <map>
#include <set>

#include "quor/traced/running_app.h"
#include "quor/traced/segment_watch.h"

class Apps final : public RunningApp::Home, public SegmentWatch::Finder {
 public:
  // Which hub takes the traces for a machine; the local one for a text that names no machine.
  class Router {
   public:
    virtual Hub& HubForMachine(const std::string& machine) = 0;
    // The folder in which applications are watched is not what it was.
    virtual void OnPlaceChanged() = 0;

   protected:
    ~Router() = default;
  };
  static constexpr std::size_t kInstancesMax = 4096;

  Apps(asio::io_context& io, Catalogue& catalogue, Router& router, std::string machine)
      : m_io(io),
        m_catalogue(catalogue),
        m_router(router),
        m_machine(std::move(machine)),
        m_watch(io, *this),
        m_keeps(io),
        m_gives(io) {}

  // Finds the applications beside this socket from now on. Those that died while no service ran
  // wait for LetGo.
  void Watch(const std::string& socketPath);
  // The same in a folder that has been made anew.
  void WatchAnew(const std::string& socketPath);
  // Something became of the folder: it is put right, or made anew.
  void LookAtFolder(const std::string& socketPath);
  // A monitor is here, or none will come: what the dead left is taken.
  void LetGo();

  // An application has introduced itself. False and a reason: refused.
  bool Arrive(AppArrival arrival, std::string* why);
  // Takes it into the catalogue and lets the running instances have it.
  void Submit(CatalogueApp& app, const Catalogue::Submitted& what);
  void CloseHandle(CatalogueApp& app, std::uint32_t pid);
  void EndGrace();
  void Stop();

  Catalogue& Known() { return m_catalogue; }
  std::size_t Running() const { return m_running.size(); }

 private:
  CatalogueApp* EntryFor(const std::string& name) override { return m_catalogue.Enter(name); }
  std::uint32_t EnterTrace(CatalogueApp& entry, const TracedPoint& point) override;
  std::uint32_t DefaultSettings() const override { return m_catalogue.DefaultSettings(); }
  Hub& HubFor(const LinkSink& sink) override;
  void OnBegan(RunningApp& app) override;
  void EndIn(CatalogueApp& entry, const RunningApp& app);
  void OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) override;
  void OnEnded(RunningApp& app) override;
  void Apply(const CatalogueApp& app, bool sink);
  void OnFile(const std::string& name) override;
  void OnPlaceChanged() override { m_router.OnPlaceChanged(); }
  using Key = std::pair<std::uint64_t, std::uint64_t>;  // device and inode of the segment
  // A file that is kept for the count in it, and until when: longer while a monitor, or the
  // machine that it goes to, has still to be given something of it.
  struct Kept {
    std::chrono::steady_clock::time_point until;
    std::string name;
    Key key;
    std::shared_ptr<Source> source;
    bool wasUnderWay = false;
  };
  static constexpr std::size_t kKeptLongMax = 4096;
  void Keep(Kept kept);
  void OnRest(const std::string& name, const Key& key, const SegmentRest& rest, int file);
  bool IsKept(const Key& key) const;
  bool IsBroken(const Key& key) const;
  std::shared_ptr<Source> SourceOf(const SegmentRest& rest, int file);
  static bool IsWanted(Kept& kept);
  void RemoveKept();
  void GiveMemoryBack();
  static Key KeyOf(const SegmentMap& segment) { return {segment.Device(), segment.Inode()}; }
  void Find(const std::string& name, SegmentMap segment);
  void PassOver(const std::string& name, const std::string& reason);
  std::shared_ptr<RunningApp> Add(const Key& key, AppArrival& arrival, std::string* why);

  asio::io_context& m_io;
  Catalogue& m_catalogue;
  Router& m_router;
  const std::string m_machine;
  SegmentWatch m_watch;
  std::deque<Kept> m_kept;
  static constexpr std::size_t kBrokenMax = 1024;
  std::deque<Key> m_broken;  // segments that are not read any more
  asio::steady_timer m_keeps;
  asio::steady_timer m_gives;
  int m_endedSince = 0;  // the memory of those that ended was last given back
  bool m_givesSoon = false;
  std::map<Key, std::shared_ptr<RunningApp>> m_running;
  bool m_holdsFound = false, m_leftSome = false;
  std::set<std::string> m_unreadable;  // files that somebody owns
};
