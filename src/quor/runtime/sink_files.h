// The files of a file sink: one that is being written, and the numbered ones before it.
//
// Shape    `name.trc`, and behind it `name.1.trc` (the newest), `name.2.trc` ... A file that stands
//          there at the start, from an earlier run, is numbered away like a full one. When another
//          process is writing `name.trc` (a second instance, the parent of a fork), this one
//          writes `name.pid<number>.trc`.
// Owner    The descriptor, locked against other writers and readers of this system.
// Errors   False and a reason; a later call may succeed. Nothing is ever overwritten that was not
//          numbered away before, save what maxfiles lets go.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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
  bool Begin(std::string* why);
  void End();
  bool IsOpen() const { return m_descriptor >= 0; }
  // Writes all, or as much as goes: *written tells. False when not all went.
  bool Write(const std::uint8_t* bytes, std::size_t size, std::size_t* written, std::string* why);
  // Takes the last `bytes` bytes of the file away again: the beginning of a record that did not
  // fit.
  void TakeBack(std::size_t bytes);
  std::uint64_t Size() const { return m_size; }
  const std::string& Path() const { return m_path; }
  // In a fork's child: the file is the parent's.
  void Abandon();

 private:
  bool OpenLocked(std::string* why, bool* busy);
  bool NumberAway(std::string* why);
  std::string Numbered(std::uint32_t number) const;

  std::string m_path, m_stem;
  SinkOptions m_options;
  int m_descriptor = -1;
  std::uint64_t m_size = 0;
};
