// The folder of the files in which applications build their traces. The service finds the files
// without any message, also that of an application that was killed with its first trace or that ran
// while no service did.
//
// Shape    <folder of the socket>/segments, a folder of this user alone. If the file system there
//          is not in memory, it is a link to a folder under /dev/shm. One file for each
//          application, PID-START-RANDOM, with a dot in front until it is complete. The application
//          makes the file. The service removes it when it has taken all traces and the owner has
//          ended.
//          At the place of the machine's service every account may make files in the folder, and
//          only that service lists them. The folder gives them the group of the service, so that
//          the service may read and write them without further rights, and other accounts may not.
// Owner    Holds the folder open.
// Errors   -1, false or nothing, and errno. The content of the folder is not trusted: a link,
//          another user's file, or a file that others may read or write is never opened. At the
//          place of the machine's service a file may be any user's. It must have the group of the
//          service and no second name.
// Threads  One.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "quor/link/paths.h"

class SegmentFolder {
 public:
  SegmentFolder() = default;
  ~SegmentFolder() { Close(); }
  SegmentFolder(const SegmentFolder&) = delete;
  SegmentFolder& operator=(const SegmentFolder&) = delete;

  // Opens the folder beside this socket. Makes it if it is missing or is not such a folder, and
  // corrects its rights if others may enter it. The folder of the socket must be this user's alone.
  bool Open(const std::string& socketPath);
  // For an application: at the place where it looks for its service.
  bool OpenFor(const ServiceEnvironment& environment);
  // At the place of the machine's service, whose owner is given. Makes nothing.
  bool OpenOfMachine(const std::string& socketPath, uid_t owner);
  // The same for that service: makes or corrects it. Its group is that of this process.
  bool MakeOfMachine(const std::string& socketPath);
  void Close();
  // For a service that ends: removes the linked folder in memory if it is empty.
  static void RemoveEmpty(const std::string& socketPath);
  static void RemoveEmptyOfMachine(const std::string& socketPath);
  bool IsOpen() const { return m_folder >= 0; }
  int Descriptor() const { return m_folder; }
  // Both are open and are the same folder.
  bool IsSame(const SegmentFolder& other) const;

  // A new, empty file that nobody finds yet. Fails if the file system is nearly full.
  int NewFile(std::uint64_t startedNs, std::uint64_t random);
  // Call it when the new file is complete: from now on the service finds it.
  bool Show();
  void Discard();

  // Of complete files. `isWhole`: false if not all could be read, for want of a descriptor, say.
  std::vector<std::string> Names(bool* isWhole = nullptr) const;
  int OpenFile(const std::string& name) const;
  // Removes the name if it still refers to that file.
  bool Remove(const std::string& name, dev_t device, ino_t inode) const;
  // Removes a file that is not a segment and has no owner any more.
  bool RemoveUnowned(const std::string& name) const;
  // The same for files that were never completed.
  void RemoveUnfinished() const;
  // Of whatever has this name.
  std::optional<uid_t> OwnerOf(const std::string& name) const;
  // At the place of the machine's service: removes whatever it is.
  void RemoveAnything(const std::string& name) const;

 private:
  std::vector<std::string> Entries(bool hidden, bool* isWhole = nullptr) const;
  bool IsAcceptable(int file) const;

  int m_folder = -1;
  bool m_ofMachine = false;
  gid_t m_group = 0;  // of the files, at the place of the machine's service
  std::string m_new;
};
