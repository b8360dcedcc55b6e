// The file sink of this process, if it has one, and the lock around it.
//
// Shape    Without a file sink the service takes the traces out of the ring.
// Owner    Owns the sink.
// Errors   TakeReport reports what a sink could not write, also after the sink was removed.
// Threads  Set, Serve, TakeReport: the link thread. Push and End: any, also a signal handler. So
//          nothing is allocated under the lock: the handler may have interrupted the allocator.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "quor/link/link.h"
#include "quor/runtime/owner_lock.h"
#include "quor/runtime/sink/file_sink.h"

class SinkKeeper {
 public:
  RingTaker Taker() const { return m_sink.load() ? RingTaker::Application : RingTaker::Service; }
  // The sink at the start: before any other thread may come here, and without the lock, which is
  // taken before the runtime's.
  void Begin(const std::optional<LinkSink>& sink);
  // Sets the sink that the service orders. A file that is given up first gets all traces in the
  // ring.
  void Set(const LinkSink& sink);
  // Writes new traces. Returns the milliseconds after which it must be called again, unless the
  // segment's event is signalled earlier; -1: there is no sink.
  int Serve();
  // At most once a second, or with `last` any report that there is.
  bool TakeReport(LinkReport* report, bool last = false);
  // Writes everything in the ring to the file before it returns.
  void Push();
  // The process ends: from now on nothing is buffered.
  void End();

  void BeforeFork();
  void AfterForkInParent();
  void AfterForkInChild();

 private:
  static std::unique_ptr<FileSink> Make(const LinkSink& sink, const SinkOptions& options);

  OwnerLock m_lock;
  std::atomic<FileSink*> m_sink{nullptr};
  std::atomic<bool> m_again{false};  // a push came while its own thread held the lock
  std::atomic<bool> m_ending{false};
  LinkSink m_setting;
  LinkReport m_left;  // of the previous sink
  std::uint64_t m_pushDueMs = 0;
  bool m_heldAtFork = false;
};
