// The load of one trace file: what its thread works on and fills.
//
// Owner    Shared by the document and the thread, with a share in the mapped file, so that either
//          may outlive the other. A file of the older format is converted first, and the load then
//          goes on with the new file.
// Errors   Whatever stops the load but the cancel event shows "Error opening trace file", behind
//          the words of the conversion's failing step. The done message is then not posted: kept,
//          the progress box stays until another load is done. The load lets go of its files.
// Threads  Run on the load thread, which alone fills the containers. They belong to the interface
//          thread from the hand-over on, or from the end of the thread. Everything else on the
//          interface thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "base/mapped_file.h"
#include "base/win32_handle.h"
#include "documents/trace_indexes.h"
#include "docview/host.h"
#include "records/name_map.h"
#include "records/trace_list.h"
#include "records/trc_damage.h"

class TraceFileLoad : public std::enable_shared_from_this<TraceFileLoad> {
 public:
  // Positions that may wait for the interface thread at a time. Those that the walk reaches while
  // so many wait are not posted: a file of four billion stray bytes would else queue millions.
  static constexpr int kWaitingPositions = 64;

  TraceFileLoad(Host& host, std::shared_ptr<const MappedFile> file, std::string path,
                HANDLE cancelEvent);

  // The load. `beforeWalk` runs before the walk and before a conversion; it may be empty.
  void Run(const std::function<void()>& beforeWalk);

  // Runs by a posted call behind the done message, when the load has not failed. Whoever empties it
  // before is not called.
  std::function<void()> m_handOver;
  // The document no longer waits: the progress box is told that this load is done, and from now on
  // the thread can reach neither host nor document.
  void Disown();
  // Nobody reads the thread's boxes any more: it goes on without waiting for that. REQUIRES: the
  // cancel event is set.
  void LetGo();
  // REQUIRES: the thread has ended.
  bool Failed() const { return m_failed; }

  // The files that the traces need: what was loaded and, behind a conversion, the old file, whose
  // view is kept although nothing reads it.
  std::shared_ptr<const MappedFile> m_file, m_oldFile;
  TraceList_t m_traces;
  NameMap m_names;
  TraceIndexes m_indexes;
  TrcDamage m_damage;
  std::uint64_t m_nameRecords = 0;

 private:
  struct Sink;
  void Fail();
  bool Convert(const std::function<void()>& beforeWalk);
  void Walk(const std::function<void()>& beforeWalk);
  void Say(const char* words, BoxIcon icon);
  void PostStart(const char* caption);
  void PostPosition(std::uint64_t position, bool last);
  void PostDone();
  void Post(std::function<void()> call);

  Host& m_host;
  std::mutex m_hostMutex;   // held while the host is used on the load thread
  bool m_disowned = false;  // the thread must leave the host alone
  HANDLE m_boxRead;         // while the thread waits for that
  const std::string m_path;
  const HANDLE m_cancelEvent;
  std::atomic<int> m_waitingPositions = 0;
  bool m_failed = false;
  bool m_givenUp = false;  // the conversion, because the program ends
};
