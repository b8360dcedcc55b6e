// Writes the traces of a file of the older format in the current one.
//
// Shape    Every trace, in order, preceded by the names that it is the first to use. Bytes that are
//          not a record are left out and counted.
// Owner    Borrows `old` and the writer, whose file must be created before and finished afterwards.
// Errors   `written` false: a write failed, and nothing was written after it.
// Threads  Touches only its arguments.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "records/trc_damage.h"
#include "records/trc_writer.h"

struct OldConversion {
  bool written = true;
  bool cancelled = false;
  std::uint64_t position = 0;   // in the old file; may be beyond its end
  std::uint64_t traces = 0;     // written
  TrcDamage damage;             // of the old file
  std::uint64_t cutTexts = 0;   // longer than a record can hold
  std::uint64_t cutNames = 0;   // likewise
  std::uint64_t lostNames = 0;  // after the 65,536th: a file has no more ids
};

// What the new file lacks, a text for each kind, as for DamageText.
std::vector<std::string> LossTexts(const OldConversion& conversion, bool places = false);

// `goOn` is called with the position at every 1024th record. False ends the conversion; the records
// written so far form a valid file.
// REQUIRES: zeros after the end of `old`, as for WalkOldTrc.
OldConversion ConvertOldTrc(Bytes old, TrcWriter& writer,
                            const std::function<bool(std::uint64_t position)>& goOn);
