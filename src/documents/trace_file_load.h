// The load of one trace file: the objects that its thread uses and fills.
//
// Owner    Shared by the document and the thread, and shares the mapped file, so that either may
//          outlive the other. A file of the older format is converted first; the load then
//          continues with the new file.
// Errors   Every failure except a cancel shows "Error opening trace file", after the message of a
//          failed conversion step. The done message is then not posted (kept: the progress box
//          stays until another load is done). The load releases its files.
// Threads  Run is for the load thread, which with its helpers alone fills the containers. They
//          belong to the interface thread after the hand-over or the end of the thread. Everything
//          else is for the interface thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "base/mapped_file.h"
#include "base/win32_handle.h"
#include "documents/trace_part.h"
#include "docview/host.h"
#include "records/old_conversion.h"

class TraceFileLoad : public std::enable_shared_from_this<TraceFileLoad> {
 public:
  // The number of positions that may wait for the interface thread at a time. While so many wait,
  // no position is posted: otherwise a file of four billion stray bytes would queue millions.
  static constexpr int kWaitingPositions = 64;

  TraceFileLoad(Host& host, std::shared_ptr<const MappedFile> file, std::string path,
                HANDLE cancelEvent, std::shared_ptr<LoadSearch> search = nullptr);

  // Loads the file. `beforeWalk` runs before the walk and before a conversion; it may be empty.
  void Run(const std::function<void()>& beforeWalk);

  // Called by a posted call after the done message, if the load has not failed. Empty it to prevent
  // that call.
  std::function<void()> m_handOver;
  // The document no longer waits: the progress box is told that this load is done, and from now on
  // the thread uses neither host nor document.
  void Detach();
  // Nobody reads the thread's message boxes any more: it continues without waiting for that.
  // REQUIRES: the cancel event is set.
  void StopWaiting();
  // REQUIRES: the thread has ended.
  bool Failed() const { return m_failed; }

  // The files that the traces need: the loaded file and, after a conversion, the old file, which
  // stays mapped although nothing reads it.
  std::shared_ptr<const MappedFile> m_file, m_oldFile;
  TracePart m_found;
  OldConversion m_conversion;  // of a file of the older format

 private:
  class Parts;
  void Fail();
  bool Convert(const std::function<void()>& beforeWalk);
  void Walk(const std::function<void()>& beforeWalk);
  void ShowMessage(const char* text, BoxIcon icon);
  void PostStart(const char* caption);
  void PostPosition(std::uint64_t position, bool last);
  void PostDone();
  void Post(std::function<void()> call);

  Host& m_host;
  std::mutex m_hostMutex;   // held while the host is used on the load thread
  bool m_detached = false;  // the thread must not use the host
  HANDLE m_boxRead;         // while the thread waits for that
  const std::string m_path;
  const HANDLE m_cancelEvent;
  const std::shared_ptr<LoadSearch> m_search;  // null: none
  std::atomic<int> m_waitingPositions = 0;
  bool m_failed = false;
  bool m_givenUp = false;  // the conversion, because the program ends
};
