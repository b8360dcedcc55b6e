// Rewrites a trace file of the older format in the current one, under its own name.
//
// The new file is made beside the old one, as PATH.tmp. When it is whole the old one becomes
// PATH.old, the new one PATH, and the old one is deleted. Nothing is ever replaced.
//
// Errors   Every failing step but the last one is told once. The old file stays until the new one
//          stands under its name; PATH.tmp, and between the renames PATH.old, stay behind.
// Cancel   Kept: a cancel is no failure. What is converted so far takes the old file's place, and
//          the rest of the old file is gone.
// Threads  The load thread; touches only its arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/mapped_file.h"
#include "docview/host.h"

struct ConversionEars {
  // At every 1024th record; false cancels. Once more behind the last one.
  std::function<bool(std::uint64_t position, bool last)> progress;
  // Words for the person. Returns when they have been read.
  std::function<void(const char* words, BoxIcon icon)> say;
};

// The new file, or null. `old` stays mapped as long as its holder likes.
std::shared_ptr<const MappedFile> ConvertTraceFile(const MappedFile& old, const std::string& path,
                                                   const ConversionEars& ears);
