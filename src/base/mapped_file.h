// A read-only view of a whole file that can be read safely whatever happens to the file.
//
// Shape    Size() bytes of the file, followed by at least kGuardBytes of zeros. So a record that
//          the end of the file cuts reads as zeros there, and no field needs a check. A page that
//          another program cuts off while it is mapped reads as zeros from then on (the last,
//          partial page is a copy and stays). Bytes that it appends are not seen.
// Owner    Shared: the view lives as long as anyone holds the MappedFile.
// Errors   Null and a reason: no such file, no permission, not a regular file, empty, 4 GiB or
//          more (a position is a 32-bit number in the progress messages), no address space.
// Threads  Open and destruction from any thread; the bytes are read-only.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "base/bytes.h"
#include "base/fault_guard.h"
#include "base/file_change.h"
#include "base/file_gate.h"
#include "base/file_mark.h"

class MappedFile {
 public:
  // The longest possible record: a fixed part and two texts of 65,535 bytes.
  static constexpr std::size_t kGuardBytes = 131115;

  static std::shared_ptr<const MappedFile> Open(const std::string& path,
                                                std::string* why = nullptr);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  Bytes View() const { return {m_data, m_size}; }
  // Copies bytes of the view without the cost of mapping their pages. REQUIRES: they are in it, and
  // nobody calls CloseFile meanwhile.
  void Copy(std::uint8_t* to, std::uint64_t from, std::size_t bytes) const;
  std::uint32_t Size() const { return static_cast<std::uint32_t>(m_size); }
  // The mark of the file when it was mapped.
  const FileMark& Mark() const { return m_mark; }
  // How other programs have changed it since then. Appending is no change. Two changes may go
  // unnoticed: one at the beginning of a file that has grown meanwhile, and a write within the same
  // tick of the file system's clock.
  FileChange Change() const;
  // Lets others write the file from now on. The view stays; its changes are no longer known.
  // Threads: while nobody asks for a change.
  void CloseFile() const { m_file.Close(); }

 private:
  MappedFile() = default;
  bool Map();
  std::uint8_t* Reserve();
  bool IsTailAsCopied() const;
  mutable OpenFile m_file;
  FileMark m_mark;
  FaultGuard m_guard;
  std::uint8_t* m_data = nullptr;
  std::size_t m_size = 0;
  std::size_t m_mapped = 0;  // whole pages; the copy follows them
  std::size_t m_used = 0;    // of the address space
};
