// A trace file that another program writes, and the files that follow it under its name.
//
// Shape    Gives the bytes from the first record on, as they are written. When the file is numbered
//          away, it is read to its end, and then the next one, which may have got a number itself
//          meanwhile. Numbered names are "web.1.trc", "web.trc.1.trc" and "web.trc.1".
// Owner    Owns a descriptor. It holds no lock and maps nothing, so whoever writes the file may
//          also cut, move and remove it.
// Errors   Bad and a reason, without the file's name.
// Threads  One.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "records/raw_trace.h"
#include "records/trc_walk.h"

class GrowingFile {
 public:
  // None: there is no such file.
  enum class Opened { Yes, None, Bad };
  enum class Seen {
    Good,  // perhaps no bytes
    Anew,  // the file was cut, or written again: it begins again
    Bad,
  };
  enum class Moved {
    No,
    Away,      // no file has the name; the old one is kept
    Next,      // the old one was numbered away, and this is the next
    Later,     // the same, but the old one was removed, and perhaps others behind it
    Replaced,  // another file has the name
    Bad,
  };

  explicit GrowingFile(std::string path) : m_path(std::move(path)) {}
  ~GrowingFile() { Close(); }
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  bool IsOpen() const { return m_file >= 0; }
  int Descriptor() const { return m_file; }
  Opened Open(std::string* why);
  // Reads what stands behind what was taken.
  Seen Read(std::string* why);
  // What was read last: at most kPieceBytes, which end anywhere.
  Bytes Piece() const { return m_piece; }
  // Of the piece, from its beginning.
  void Take(std::size_t bytes);
  // To the first record.
  void Rewind();
  // In the file, of what comes next.
  std::uint64_t Position() const { return m_position; }
  // Zero bytes stand where the header belongs, as after a cut under a program that writes on where
  // it was. Such a file is read like an empty one, until it has a header.
  bool IsBlank() const { return m_blank; }
  // Of the file, at the last look at it.
  std::uint64_t Size() const { return static_cast<std::uint64_t>(m_status.st_size); }
  // Goes on to another file. REQUIRES: the last Read gave no whole record.
  Moved MoveOn(std::string* why);

 private:
  static constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
  static constexpr std::size_t kHeadBytes = 512, kTailBytes = 64;
  static_assert(kPieceBytes > kTagBytes + kTraceBytesMax);
  struct Place {
    int style;
    unsigned number;
  };

  void Close();
  void Restart();
  bool Adopt(int file);
  bool IsSame();
  bool HasAt(std::uint64_t position, const std::string& bytes) const;
  std::string Numbered(const Place& place) const;
  std::optional<Place> FindNumbered() const;
  std::optional<Place> OldestLater() const;
  Moved MoveTo(const std::string& path, Moved how, std::string* why);

  const std::string m_path;
  int m_file = -1;
  struct stat m_status = {};           // at the last look
  std::optional<struct stat> m_named;  // of the file under the name, before the last Read
  std::uint64_t m_position = 0;
  std::string m_head, m_tail;  // the first bytes, and the last ones that were ever taken
  std::uint64_t m_tailEnd = 0;
  bool m_blank = false;
  std::unique_ptr<std::uint8_t[]> m_buffer;
  Bytes m_piece;
};
