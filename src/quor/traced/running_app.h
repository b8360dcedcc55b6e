// One running instance of an application: its link, its segment, and the timing of reading its
// ring.
//
// Shape    Found by the file of its segment or introduced over a link. The link may break and come
//          again (after the application changed its name, say) while the owner of the segment
//          lives. When the owner has ended, by exit or exec, the rest of its ring is delivered and
//          the instance ends. If no link comes, the ring is read after a while nevertheless, unless
//          the application writes a file. Only the segment's lock says that the owner has ended:
//          the end of the process and of the link are only reasons to look at the lock.
// Owner    Shared; keeps itself alive while it waits for something. Ends by itself or by Stop.
// Errors   A broken link or segment ends with a reason in the log and affects no other instance.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>

#include "quor/catalogue/catalogue.h"
#include "quor/traced/app_arrival.h"
#include "quor/traced/traced_app.h"

class RunningApp final : public std::enable_shared_from_this<RunningApp> {
 public:
  class Host {
   public:
    // Null: too many.
    virtual CatalogueApp* EntryFor(const Account& account, const std::string& name) = 0;
    virtual std::vector<std::uint32_t> EnterTraces(CatalogueApp& entry, const TracedPoints&) = 0;
    virtual std::uint32_t DefaultSettings() const = 0;
    virtual Hub& HubFor(const Account& account, const LinkSink& sink) = 0;
    virtual void OnBegan(RunningApp& app) = 0;
    virtual void OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) = 0;
    virtual void OnEnded(RunningApp& app) = 0;

   protected:
    ~Host() = default;
  };

  RunningApp(asio::io_context& io, Host& host, CatalogueApp& entry, std::string machine,
             AppArrival& arrival);

  void Start(AppArrival arrival);
  // Without a link: takes nothing until a link comes, or none has come for a while, or the owner
  // has ended. `held`: not before ReleaseHeld either.
  void StartWithoutLink(bool held);
  void ReleaseHeld();
  // The same segment, over another link. REQUIRES: the constructor has taken its part of `arrival`.
  void Relink(AppArrival arrival);
  // The settings or the sink in the catalogue have changed. What the environment gave stays.
  void ApplySettings();
  void SendKept();  // the rules for points to come
  void ApplySink();
  // Somebody has set these traces, by id, or the sink: what the environment gave is over for them.
  void DropStart(const std::vector<bool>& traces, bool sink);
  const InstanceStart& StartedWith() const { return m_start; }
  std::map<std::uint32_t, std::uint32_t> StartSettings() const;  // by trace id
  // Takes what is in the ring now, and releases everything. Does not call the host.
  void Stop();

  // It is ending and accepts no link any more.
  bool IsEnding() const { return m_ended; }
  bool HasBegun() const { return m_hasBegun; }  // linked or claimed, not only found
  bool IsBroken() const { return m_app.IsBroken(); }
  CatalogueApp& Entry() { return *m_entry; }
  std::uint32_t Pid() const { return m_app.Pid(); }
  const Account& Owner() const { return m_app.Owner(); }
  const SegmentMap& Segment() const { return m_app.Segment(); }
  // The name of the segment's file; empty: not found yet.
  const std::string& File() const { return m_file; }
  void SetFile(const std::string& name) { m_file = name; }
  // The source, when all its traces were taken; null: they were not.
  const std::shared_ptr<Source>& FinishedSource() const { return m_finishedSource; }

 private:
  void TakeLink(AppArrival arrival);
  void WatchProcess();
  void AwaitEndOfProcess();
  void CheckOwnerLock();
  void CheckLockWithoutLink(bool soon);
  bool ReadWithoutLink();
  void EndWithoutLink();
  void SetBegun();
  void AwaitLink();
  void ReadLink();
  bool TakeBytes(const std::uint8_t* from, const std::uint8_t* end);
  bool Handle(const LinkFrame& frame);
  void CloseLink();
  void LoseLink(const std::string& why);
  const LinkSink& Sink() const { return m_start.sink ? *m_start.sink : m_entry->sink; }
  void Send(const std::vector<std::uint8_t>& frame);
  bool ReadPoints();
  bool MayTake() const;
  void UpdateTaking();
  void Pump();
  void Sleep();
  void PumpIn(std::chrono::milliseconds time);
  void CloseAll();
  void End();

  asio::io_context& m_io;
  Host& m_host;
  CatalogueApp* m_entry;
  TracedApp m_app;
  OwnedDescriptor m_socket, m_process;
  LinkDecoder m_decoder;
  asio::steady_timer m_timer, m_look;
  RingTaker m_taker = RingTaker::Service;
  std::deque<SinkKind> m_unanswered;  // sinks sent whose Taker has not come
  std::vector<std::uint32_t> m_pointIds;
  InstanceStart m_start;  // its settings are as long as m_pointIds
  bool m_dead = false, m_ended = false, m_closed = false, m_pumping = false, m_fileSink = false,
       m_processEnded = false, m_isHeldBack = false, m_readsWithoutLink = false, m_hasBegun = false;
  std::chrono::steady_clock::time_point m_unlinkedSince = std::chrono::steady_clock::now();
  int m_looks = 0;  // at the lock, since there was a reason
  std::string m_file;
  std::shared_ptr<Source> m_finishedSource;
};
