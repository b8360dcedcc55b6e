// The file sink of this process, while it has one, and who may touch it when.
//
// Shape    Without a file sink the service takes the traces out of the ring.
// Owner    Of the sink.
// Errors   What a sink could not write is told by TakeReport, also when it is no longer in use.
// Threads  Set, Serve, TakeReport: the link thread. Push and End: any, also a signal handler; so
//          nothing is allocated under the lock, because the handler may have interrupted the
//          allocator.
#pragma once

#include <atomic>
#include <cstdint>

#include "quor/ring/link.h"
#include "quor/runtime/file_sink.h"
#include "quor/runtime/owner_lock.h"

class SinkKeeper {
 public:
  RingTaker Taker() const { return m_sink.load() ? RingTaker::Application : RingTaker::Service; }
  // Makes the sink what the service wants; a file that is given up gets all that is in the ring.
  void Set(const LinkSink& sink);
  // Writes what came. Gives the milliseconds after which it wants to be called again, or when the
  // segment's bell rings; -1: there is no sink.
  int Serve();
  // At most once a second, or with `last` whatever there is.
  bool TakeReport(LinkReport* report, bool last = false);
  // Everything that is in the ring goes to the file before this returns.
  void Push();
  // The process ends: from now on nothing is buffered.
  void End();

  void BeforeFork();
  void AfterForkInParent();
  void AfterForkInChild();

 private:
  OwnerLock m_lock;
  std::atomic<FileSink*> m_sink{nullptr};
  std::atomic<bool> m_again{false};  // a push came while its own thread held the lock
  std::atomic<bool> m_ending{false};
  LinkSink m_setting;
  LinkReport m_left;  // of the sink before this one
  std::uint64_t m_pushDueMs = 0;
  bool m_heldAtFork = false;
};
