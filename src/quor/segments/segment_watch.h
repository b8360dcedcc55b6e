// Finds the segments of applications by their files (quor/link/segment_folder.h): those that exist
// at the start, and each new one as soon as it is complete.
//
// Owner    Borrows its finder.
// Errors   Open: false and a reason. When the kernel's queue of events overflows, all existing
//          files are reported again. Any account may make files faster than they can be looked at.
//          So files are reported for a short time, and the rest when others have had their turn.
// Threads  The service's one thread.
#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <string>

#include "quor/link/segment_folder.h"
#include "quor/segments/owned_descriptor.h"

class SegmentWatch {
 public:
  class Finder {
   public:
    virtual void OnFile(const std::string& name) = 0;
    // Something changed in the folder of the socket, or the folder of the segments has changed.
    virtual void OnPlaceChanged() = 0;

   protected:
    ~Finder() = default;
  };

  // `ofMachine`: of all its accounts.
  SegmentWatch(asio::io_context& io, Finder& finder, bool ofMachine = false)
      : m_finder(finder), m_ofMachine(ofMachine), m_inotify(io), m_turn(io) {}

  // Reports the existing files before it returns. If there is no folder for segments, a change in
  // the folder of the socket is reported.
  bool Open(const std::string& socketPath, std::string* why);
  // Reports the files that have come since, without waiting. If there are very many, only some.
  void Read();
  // All that exist: now, or in turns and not too often. A folder that cannot be listed for the
  // moment is listed later.
  void ReportAll();
  void ReportAllSoon();
  void Close();
  // The path leads to the folder that is watched, or to no folder.
  bool IsInPlace(const std::string& socketPath) const;
  const SegmentFolder& Folder() const { return m_folder; }

 private:
  using Clock = std::chrono::steady_clock;
  void Await();
  bool WatchFolder();
  void Collect();
  void List();
  void TakeTurn(Clock::duration time);
  void AwaitTurn();

  bool OpenFolder(SegmentFolder& folder, const std::string& socketPath) const {
    return m_ofMachine ? folder.MakeOfMachine(socketPath) : folder.Open(socketPath);
  }

  Finder& m_finder;
  const bool m_ofMachine;
  SegmentFolder m_folder;
  OwnedDescriptor m_inotify;
  int m_place = -1;  // the watch of the socket's folder
  asio::steady_timer m_turn;
  std::deque<std::string> m_found;  // not reported yet
  bool m_listsAgain = false;        // all are to be reported
  Clock::time_point m_listFrom{};   // not before
};
