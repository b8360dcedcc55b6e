// One running instance of an application: its link, its segment and the pace at which its ring is
// drained.
//
// Shape    Found by the file of its segment or introduced over a link; the link may break and come
//          again (the application has taken another name, say) while the owner of the segment
//          lives. When that has gone, by an end or by an exec, what is left in its ring is
//          delivered and the instance ends. One that no link comes from is read all the same after
//          a while, unless it writes a file itself. That it has gone the segment's lock says, and
//          nothing else: the end of the process and of the link are only reasons to look.
// Owner    Shared; keeps itself while something is awaited. Ends by itself or by Stop.
// Errors   A broken link or segment ends with a reason in the log and touches nobody else.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>

#include "quor/catalogue/catalogue.h"
#include "quor/ring/link.h"
#include "quor/traced/owned_descriptor.h"
#include "quor/traced/traced_app.h"

struct AppArrival {
  LinkHello hello;
  SegmentMap segment;  // none: the application has lost its descriptor
  OwnedDescriptor socket;
  std::uint32_t pid = 0;           // as the kernel tells it
  std::vector<std::uint8_t> rest;  // what came behind the hello
};

class RunningApp final : public std::enable_shared_from_this<RunningApp> {
 public:
  class Home {
   public:
    virtual CatalogueApp* EntryFor(const std::string& name) = 0;  // null: too many
    virtual std::uint32_t EnterTrace(CatalogueApp& entry, const TracedPoint& point) = 0;
    virtual std::uint32_t DefaultSettings() const = 0;
    virtual Hub& HubFor(const LinkSink& sink) = 0;
    virtual void OnBegan(RunningApp& app) = 0;
    virtual void OnRenamed(RunningApp& app, CatalogueApp& from, CatalogueApp& to) = 0;
    virtual void OnEnded(RunningApp& app) = 0;

   protected:
    ~Home() = default;
  };

  RunningApp(asio::io_context& io, Home& home, CatalogueApp& entry, std::string machine,
             AppArrival& arrival);

  void Start(AppArrival arrival);
  // Without a link: nothing is taken until there is one, or none has come for a while, or the owner
  // has gone. `held`: not before LetGo, when somebody looks.
  void StartFound(bool held);
  void LetGo();
  // REQUIRES: `arrival` is what the constructor left of it.
  // Relink: the same segment, over another link.
  void Relink(AppArrival arrival);
  // What is configured has changed.
  void ApplySettings();
  void ApplySink();
  // Takes what is in the ring now, and lets go of everything. Not told to the home.
  void Stop();

  // It is on its way out and takes no link any more.
  bool IsEnding() const { return m_ended; }
  bool HasBegun() const { return m_hasBegun; }  // linked or claimed, not found alone
  bool IsBroken() const { return m_app.IsBroken(); }
  CatalogueApp& Entry() { return *m_entry; }
  std::uint32_t Pid() const { return m_app.Pid(); }
  const SegmentMap& Segment() const { return m_app.Segment(); }
  // The name of the segment's file; empty: not found yet.
  const std::string& File() const { return m_file; }
  void SetFile(const std::string& name) { m_file = name; }
  // What was taken to its end; null: it was not.
  const std::shared_ptr<Source>& Told() const { return m_told; }

 private:
  void TakeLink(AppArrival arrival);
  void WatchProcess();
  void AwaitEndOfProcess();
  void LookForDeath();
  void LookWithoutLink(bool soon);
  bool LookAlone();
  void EndAlone();
  void SetBegun();
  void AwaitLink();
  void ReadLink();
  bool TakeBytes(const std::uint8_t* from, const std::uint8_t* end);
  bool Handle(const LinkFrame& frame);
  void LoseLink(const std::string& why);
  void Say(const std::vector<std::uint8_t>& frame);
  bool ReadPoints();
  bool MayTake() const;
  void UpdateTaking();
  void Pump();
  void Sleep();
  void PumpIn(std::chrono::milliseconds time);
  void CloseAll();
  void End();

  asio::io_context& m_io;
  Home& m_home;
  CatalogueApp* m_entry;
  TracedApp m_app;
  OwnedDescriptor m_socket, m_process;
  LinkDecoder m_decoder;
  asio::steady_timer m_timer, m_look;
  RingTaker m_taker = RingTaker::Service;
  std::deque<SinkKind> m_unanswered;  // sinks sent whose Taker has not come
  std::vector<std::uint32_t> m_pointIds;
  bool m_dead = false, m_ended = false, m_closed = false, m_pumping = false, m_fileSink = false,
       m_processEnded = false, m_isHeldBack = false, m_isAlone = false, m_hasBegun = false;
  std::chrono::steady_clock::time_point m_unlinkedSince = std::chrono::steady_clock::now();
  int m_looks = 0;  // for the owner, since there was a reason
  std::string m_file;
  std::shared_ptr<Source> m_told;
};
