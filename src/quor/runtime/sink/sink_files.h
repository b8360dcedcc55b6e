// The files of a file sink: the one that is being written, and the numbered older ones.
//
// Shape    `name.trc`, then `name.1.trc` (the newest), `name.2.trc` ... A file of an earlier run is
//          numbered at the start, like a full one. If another process writes `name.trc` (a second
//          instance, the parent of a fork), this one writes `name.pid<number>.trc`.
//          Only the owner may read a new file. In a folder that others may write, no symbolic link
//          is followed and no file is written that is not this user's alone, because another user
//          may have put it there.
// Owner    Owns the descriptor, which is locked against other writers and readers of this system.
// Errors   False, with the reason in errno; a later call may succeed. No file is overwritten. Only
//          maxfiles removes old ones.
// Threads  One at a time, also in a signal handler: nothing is allocated after the constructor.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "quor/ring/checked_descriptor.h"

struct SinkOptions {
  bool flush = false;          // push every trace to the kernel before the call returns
  std::uint32_t maxFiles = 0;  // numbered files that are kept; 0: all
  std::uint64_t maxBytes = 0;  // of one file; 0: no limit

  // "flush=1;maxfiles=10;maxsize=5;" in any order; unknown keys and bad numbers are ignored.
  static SinkOptions Parse(std::string_view text);
};

class SinkFiles {
 public:
  SinkFiles(std::string path, const SinkOptions& options);
  ~SinkFiles();
  SinkFiles(const SinkFiles&) = delete;
  SinkFiles& operator=(const SinkFiles&) = delete;

  // Begins a new, empty file after numbering the existing one.
  bool Begin();
  // Call it when the file under the name is no longer the one that is written, or has been cut
  // short: begins a new file under the name. If that fails a moved file is kept. False: there is no
  // file.
  bool Renew();
  void End();
  bool IsOpen() const { return m_descriptor.IsOpen(); }
  // Writes as much as possible; *written says how much. False if not all was written. A limit on
  // the size of the process's files counts as a full disk, and no signal ends the application
  // because of it. A file whose descriptor the application has closed is opened again. If somebody
  // has removed, replaced, moved or cut the file, nothing is written and errno is ESTALE; a move is
  // noticed within a second.
  bool Write(const std::uint8_t* bytes, std::size_t size, std::size_t* written);
  // Cuts the last `bytes` bytes off the file: the beginning of a record that did not fit.
  void TakeBack(std::size_t bytes);
  std::uint64_t Size() const { return m_size; }
  // One of two names that never change.
  const std::string& Path() const { return m_current->path; }
  // In a fork's child: the file belongs to the parent.
  void Abandon();

 private:
  struct Names {
    std::string path, stem, folder;
    const char* Name() const { return path.c_str() + folder.size(); }
  };
  enum class Opened { Yes, No, Busy, Moved };
  Opened OpenLocked();
  int OpenInFolder(bool* shared);
  bool Regain();
  bool IsInPlace(const struct stat& status);
  bool NumberAway();
  // Not on the stack: the stack of a signal handler may be small.
  using PathText = char[4200];
  const char* Numbered(std::uint32_t number, PathText& to) const;

  const Names m_wanted, m_own;  // as configured, and for use when that one is taken
  const Names* m_current = &m_wanted;
  const SinkOptions m_options;
  PathText m_from, m_to;
  CheckedDescriptor m_descriptor;
  std::uint64_t m_size = 0;
  std::uint64_t m_lookNs = 0;  // when the name is checked again
};
