// Rewrites a trace file of the older format in the current one, under its own name.
//
// The new file is made beside the old one, as PATH.tmp. When it is whole and on the disk, the old
// one becomes PATH.old, the new one PATH, and the old one is deleted. Nothing is ever replaced, and
// nothing is deleted that was not read: what another program put under the name, or wrote into the
// file, since it was mapped, is "Error renaming old trace file" and stays. A stranger's file that
// got PATH in place of the new one keeps it, and the old file stays as PATH.old.
// What remains: a file cannot be deleted on a condition. What a program that has the old file open
// writes into it between our last look and the deletion, two system calls, goes with it; so does
// a file that takes the name PATH.old in that moment.
//
// Errors   Every failing step but the last one is told once. The old file stays until the new one
//          stands under its name; PATH.tmp, and between the renames PATH.old, stay behind.
// Cancel   Kept: a person's cancel is no failure. What is converted so far takes the old file's
//          place, and the rest of the old file is gone. A program that is ended from outside has
//          nobody who wanted that: the conversion is given up without a word, the old file stays,
//          and PATH.tmp goes.
// Threads  The load thread; touches only its arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/mapped_file.h"
#include "docview/host.h"

enum class ConversionGoes { On, Short, Nowhere };  // on; cancelled by the person; given up

struct ConversionEars {
  // At every 1024th record. Once more behind the last one, when only Nowhere is heard.
  std::function<ConversionGoes(std::uint64_t position, bool last)> progress;
  // Words for the person. Returns when they have been read.
  std::function<void(const char* words, BoxIcon icon)> say;
};

// The new file, or null. `old` stays mapped as long as its holder likes.
std::shared_ptr<const MappedFile> ConvertTraceFile(const MappedFile& old, const std::string& path,
                                                   const ConversionEars& ears);
