// Finds the segments of applications by their files (quor/ring/segment_folder.h): those that are
// there at the start, and each new one as soon as it is whole.
//
// Owner    Borrows its finder.
// Errors   Open: false and a reason. When more came at once than the kernel keeps words of, all
//          that are there are told again.
// Threads  The service's one thread.
#pragma once

#include <string>

#include "quor/ring/segment_folder.h"
#include "quor/traced/owned_descriptor.h"

class SegmentWatch {
 public:
  class Finder {
   public:
    virtual void OnFile(const std::string& name) = 0;
    // Something went away or came in the folder of the socket, or became of that of the segments.
    virtual void OnPlaceChanged() = 0;

   protected:
    ~Finder() = default;
  };

  SegmentWatch(asio::io_context& io, Finder& finder) : m_finder(finder), m_words(io) {}

  // Tells those that are there before it returns. Where there is no place for segments, it is told
  // when that of the socket changes.
  bool Open(const std::string& socketPath, std::string* why);
  // Tells what has come since, without waiting.
  void Read();
  void TellAll();
  void Close();
  // The path leads to the folder that is watched, or to none.
  bool IsInPlace(const std::string& socketPath) const;
  const SegmentFolder& Folder() const { return m_folder; }

 private:
  void Await();
  bool WatchFolder();

  Finder& m_finder;
  SegmentFolder m_folder;
  OwnedDescriptor m_words;
  int m_place = -1;  // the watch of the socket's folder
};
