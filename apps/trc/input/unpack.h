// Copies a trace file into a private file, and unpacks it if it is packed with gzip or zstd.
//
// Shape    Whether it is packed is known by its first bytes, not by its name. Several packed parts
//          one behind the other are one file, as for the tools of these formats. What does not
//          begin as a trace file, of any version, is refused by its first bytes.
// Errors   Cut and Failed come with a reason for the user.
// Threads  One. An interrupt ends it.
#pragma once

#include <string>

#include "input/private_file.h"
#include "records/trc_walk.h"

enum class PackedAs { Plain, Gzip, Zstd };
// By the first bytes, of which four are enough.
PackedAs PackingOf(std::string_view begin);

enum class UnpackResult {
  Whole,
  Cut,     // the archive ends early or is damaged: what was unpacked before that is there
  Failed,  // nothing can be shown
};
// It may end when it has so many bytes; it is then as if the input were cut.
UnpackResult CopyUnpacked(int from, PrivateFile& to, std::string* why,
                          std::uint64_t bytesMax = kTrcFileBytesMax);
