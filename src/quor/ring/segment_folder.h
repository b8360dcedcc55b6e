// The files in which applications leave what they trace, so that their service finds it without
// their word: also of one that was killed with its first trace, or while no service ran.
//
// Shape    <folder of the socket>/segments, a folder of this user alone; where that is no file
//          system in memory, a link to a folder under /dev/shm. One file for each application,
//          PID-START-RANDOM; a dot in front until it is whole. The application makes it, the
//          service removes it when it has taken all and the owner has gone.
// Owner    Holds the folder open.
// Errors   -1, false or nothing, and errno. Nothing is believed of what lies there: a link, another
//          user's file, or one that others may read or write, is never opened.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quor/ring/paths.h"

class SegmentFolder {
 public:
  SegmentFolder() = default;
  ~SegmentFolder() { Close(); }
  SegmentFolder(const SegmentFolder&) = delete;
  SegmentFolder& operator=(const SegmentFolder&) = delete;

  // The one beside this socket, made where it is missing or no such folder, and put right where
  // others may enter it. The folder of the socket must be this user's alone.
  bool Open(const std::string& socketPath);
  void Close();
  // Of a service that ends: the one in memory elsewhere goes when nothing is in it.
  static void RemoveEmpty(const std::string& socketPath);
  bool IsOpen() const { return m_folder >= 0; }
  int Descriptor() const { return m_folder; }
  // Both are open and one.
  bool IsSame(const SegmentFolder& other) const;

  // A new, empty file that nobody finds yet; none where the file system is nearly full.
  int NewFile(std::uint64_t startedNs, std::uint64_t random);
  // The new file is whole: from now on it is found.
  bool Show();
  void Discard();

  std::vector<std::string> Names() const;  // of whole files
  int OpenFile(const std::string& name) const;
  // If that name still is this file.
  bool Remove(const std::string& name, dev_t device, ino_t inode) const;
  // Removes what is no segment and nobody's any more.
  bool RemoveUnowned(const std::string& name) const;
  // The same for those that never became whole.
  void RemoveUnfinished() const;

 private:
  std::vector<std::string> Entries(bool hidden) const;

  int m_folder = -1;
  std::string m_new;
};
