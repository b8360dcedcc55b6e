// Rewrites a trace file of the older format in the current one, under its own name.
//
// The new file is made beside the old one, as PATH.tmp. When it is complete and on the disk, the
// old file is renamed to PATH.old and the new one to PATH, and PATH.old is deleted. No step
// replaces another program's file under PATH. An earlier PATH.tmp and PATH.old are replaced, but
// not a link. If another program has put a file under the name, or has written into the old file or
// changed its rights or links since it was mapped, the error is "Error renaming old trace file" and
// that file stays. If another program's file gets the name PATH before
// the new one, it keeps the name, and the old file stays as PATH.old.
// One gap remains, because a file cannot be deleted on a condition. What a program that has the old
// file open writes into it between our last check and the deletion, two system calls, is deleted
// with it; so is a file that takes the name PATH.old in that moment.
//
// Errors   Every failing step but the last one is reported once. The old file stays until the new
//          one has its name. PATH.tmp, and between the renames PATH.old, are left.
// Cancel   Kept: a cancel by the user is no failure. The part that has been converted replaces the
//          old file, and the rest of the old file is lost. When the program is ended from outside,
//          no user wanted that: the conversion is given up without a message, the old file stays,
//          and PATH.tmp is removed.
// Threads  The load thread; touches only its arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/mapped_file.h"
#include "docview/host.h"
#include "records/old_conversion.h"

enum class ConversionControl { Continue, Stop, Abandon };  // Stop: cancelled by the user

struct ConversionCallbacks {
  // At every 1024th record, and once more after the last one, when only Abandon counts.
  std::function<ConversionControl(std::uint64_t position, bool last)> progress;
  // Shows a message to the user. Returns when it has been read.
  std::function<void(const char* text, BoxIcon icon)> showMessage;
};

// The new file, or null. `old` stays mapped as long as its holder wants. `result` gets what the new
// file lacks.
std::shared_ptr<const MappedFile> ConvertTraceFile(const MappedFile& old, const std::string& path,
                                                   const ConversionCallbacks& callbacks,
                                                   OldConversion* result);
