// How a trace and a trace file are known again, whatever their names and places are.
//
// Shape    A print is the 64-bit FNV-1a hash of bytes. A file has prints of its first 64 bytes,
//          1 KiB, 16 KiB and 64 KiB, as far as it has them; a file of less than 64 KiB also one of
//          all its bytes. A trace has one of its record.
// Rule     A file is the one that was known if the longest of the known beginnings that it still
//          has is unchanged. Files grow at their end only, so an appended file keeps all its
//          beginnings and a cut one those that are left. Another file differs within them: in its
//          names, or in number, time and tic count of its first traces. A file that is shorter than
//          each known beginning has at most one trace and is taken for the known one; whether a
//          row is the known one is always said by its own print.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <vector>

#include "base/bytes.h"

std::uint64_t PrintOf(Bytes bytes);
// REQUIRES: the record is whole, or MappedFile::kGuardBytes readable bytes follow its beginning.
std::uint64_t PrintOfRecord(const std::uint8_t* record);

struct FilePrint {
  struct Head {
    std::uint64_t bytes = 0, print = 0;
    bool operator==(const Head&) const = default;
  };
  std::uint64_t size = 0;
  std::vector<Head> heads;  // shorter ones first

  bool operator==(const FilePrint&) const = default;
};
FilePrint PrintOfFile(Bytes file);
// The file may have grown, or been cut, since `known` was made.
bool IsSameFile(const FilePrint& known, Bytes file);
