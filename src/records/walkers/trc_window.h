// The bytes of a .trc file for a walk from its beginning or from a later place, window by window.
//
// Shape    Each window lies in the file's view or is a copy. A walk over the view waits for its
//          pages. Where the kernel maps them in small pieces, this takes longer than to copy their
//          bytes into memory that stays in the processor's cache. So the first window tries it.
// Owner    Borrows the view and its file; a window is valid until the next one.
// Errors   std::bad_alloc. What the file has no longer is zeros, as in its view.
// Threads  One.
#pragma once

#include <cstdint>
#include <memory>

#include "base/mapped_file.h"
#include "records/record_layout.h"

class TrcWindow {
 public:
  enum class Way { ByTrial, View, Copy };
  static constexpr std::size_t kBytes = std::size_t{512} << 10;
  // From the beginning of a record to the end of its last length, or of its name.
  static constexpr std::size_t kReach = kTagBytes + kTraceFixedBytes + kLongestText;

  // Without the file there are no copies.
  TrcWindow(Bytes view, const MappedFile* file, Way way = Way::ByTrial)
      : m_view(view), m_file(file), m_way(file ? way : Way::View) {}

  // Some bytes from a position on. Behind the last of them kReach more can be read, or all that can
  // be read behind the view. REQUIRES: position is in the file, and not before the last one.
  Bytes At(std::uint64_t position);

 private:
  Way Try(std::uint64_t position) const;
  Bytes Copied(std::uint64_t position);

  const Bytes m_view;
  const MappedFile* const m_file;
  Way m_way;
  std::unique_ptr<std::uint8_t[]> m_memory;
  std::uint8_t* m_begin = nullptr;  // in the memory
  std::size_t m_held = 0;           // bytes from there on
  std::uint64_t m_position = 0;     // of the first
};
