// Writes the traces of a file of the older format in the current one.
//
// Shape    Every trace, in order, each behind the names that it is the first to use. Bytes that are
//          no record are left out, and counted.
// Owner    Borrows `old` and the writer, which has created its file and is not finished here.
// Errors   `written` false: a write failed, and nothing was written behind it.
// Threads  Touches only its arguments.
#pragma once

#include <cstdint>
#include <functional>

#include "base/bytes.h"
#include "records/trc_damage.h"
#include "records/trc_writer.h"

struct OldConversion {
  bool written = true;
  bool cancelled = false;
  std::uint64_t position = 0;   // in the old file; may lie behind its end
  std::uint64_t traces = 0;     // written
  TrcDamage damage;             // of the old file
  std::uint64_t cutTexts = 0;   // longer than a record can hold
  std::uint64_t cutNames = 0;   // likewise
  std::uint64_t lostNames = 0;  // behind the 65,536th: a file has no more ids
};

// `goOn` hears the position at every 1024th record; false ends the conversion, and what is written
// so far is a file of its own.
// REQUIRES: bytes of zeros behind `old`, as WalkOldTrc.
OldConversion ConvertOldTrc(Bytes old, TrcWriter& writer,
                            const std::function<bool(std::uint64_t position)>& goOn);
