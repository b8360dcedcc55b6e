// All running applications of this machine and what is configured for them.
//
// Owner    Borrows hubs through its router, which outlives it.
// Errors   A hello that cannot be taken is refused in words.
// Threads  The service's one thread.
#pragma once

#include <map>

#include "quor/traced/running_app.h"

class Apps final : public RunningApp::Home {
 public:
  // Which hub takes the traces for a machine; the local one for a text that names no machine.
  class Router {
   public:
    virtual Hub& HubForMachine(const std::string& machine) = 0;

   protected:
    ~Router() = default;
  };
  static constexpr std::size_t kInstancesMax = 4096;

  Apps(asio::io_context& io, Catalogue& catalogue, Router& router, std::string machine,
       SegmentKeeper& keeper)
      : m_io(io),
        m_catalogue(catalogue),
        m_router(router),
        m_machine(std::move(machine)),
        m_keeper(keeper) {}

  // What an earlier service has left behind. Those of them that have died wait for LetGo.
  void Adopt(std::vector<KeptApp> held);
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
  void OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) override;
  void OnEnded(RunningApp& app) override;
  void Apply(const CatalogueApp& app, bool sink);
  bool Adopt(KeptApp& kept);
  using Key = std::pair<std::uint64_t, std::uint64_t>;  // device and inode of the segment
  std::shared_ptr<RunningApp> Add(const Key& key, AppArrival& arrival, std::string* why);

  asio::io_context& m_io;
  Catalogue& m_catalogue;
  Router& m_router;
  const std::string m_machine;
  SegmentKeeper& m_keeper;
  std::map<Key, std::shared_ptr<RunningApp>> m_running;
};
