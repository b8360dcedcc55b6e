// The files of a file sink: one that is being written, and the numbered ones before it.
//
// Shape    `name.trc`, and behind it `name.1.trc` (the newest), `name.2.trc` ... A file that stands
//          there at the start, from an earlier run, is numbered away like a full one. When another
//          process is writing `name.trc` (a second instance, the parent of a fork), this one
//          writes `name.pid<number>.trc`.
//          A new file is its owner's alone. In a folder that others may write no symbolic link is
//          followed, and no file written that is not ours alone: another user may have put it
//          there.
// Owner    The descriptor, locked against other writers and readers of this system.
// Errors   False, and errno tells why; a later call may succeed. Nothing is ever overwritten that
//          was not numbered away before, save what maxfiles lets go.
// Threads  One at a time, also in a signal handler: after the constructor nothing is allocated.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "quor/ring/known_descriptor.h"

struct SinkOptions {
  bool flush = false;          // push every trace to the kernel before the call returns
  std::uint32_t maxFiles = 0;  // numbered files that are kept; 0: all
  std::uint64_t maxBytes = 0;  // of one file; 0: no limit

  // "flush=1;maxfiles=10;maxsize=5;" in any order; unknown keys and bad numbers are passed over.
  static SinkOptions Parse(std::string_view text);
};

class SinkFiles {
 public:
  SinkFiles(std::string path, const SinkOptions& options);
  ~SinkFiles();
  SinkFiles(const SinkFiles&) = delete;
  SinkFiles& operator=(const SinkFiles&) = delete;

  // Begins a new file, empty, after numbering away what stands there.
  bool Begin();
  // The file under the name is no longer the one that is written, or has been cut short: begins
  // anew there. A file that was only moved is kept when that fails. False when there is none.
  bool Renew();
  void End();
  bool IsOpen() const { return m_descriptor.IsOpen(); }
  // Writes all, or as much as goes: *written tells. False when not all went. A limit on the size of
  // the process's files is a full disk too, and no signal ends the application for it. A file that
  // the application has closed is opened again. Nothing is written, and errno is ESTALE, when
  // somebody has removed, replaced, moved or cut the file: a move is noticed within a second.
  bool Write(const std::uint8_t* bytes, std::size_t size, std::size_t* written);
  // Takes the last `bytes` bytes of the file away again: the beginning of a record that did not
  // fit.
  void TakeBack(std::size_t bytes);
  std::uint64_t Size() const { return m_size; }
  // One of two that stay as they are as long as this lives.
  const std::string& Path() const { return m_current->path; }
  // In a fork's child: the file is the parent's.
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
  // Not on the stack: a signal handler may have little of it.
  using PathText = char[4200];
  const char* Numbered(std::uint32_t number, PathText& to) const;

  const Names m_wanted, m_own;  // as configured, and when that one is taken
  const Names* m_current = &m_wanted;
  const SinkOptions m_options;
  PathText m_from, m_to;
  KnownDescriptor m_descriptor;
  std::uint64_t m_size = 0;
  std::uint64_t m_lookNs = 0;  // when the name is looked at again
};
