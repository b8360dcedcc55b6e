// A guess where a record of a .trc file begins, made from the bytes there alone.
//
// Shape    A trace with a date and a time that can be, followed by more of them and by names. So a
//          place within a text or a stack is hardly ever taken, unless a text holds records.
// Errors   None is found: nothing. A guess may be wrong, and a record that is damaged or has no
//          date is passed over. REQUIRES the bytes behind the end that WalkTrc requires.
// Threads  Pure. The work is bounded, whatever the bytes are.
#pragma once

#include <cstdint>
#include <optional>

#include "base/bytes.h"

// The first such place in [from, limit). REQUIRES: limit is at most the file's size.
std::optional<std::uint64_t> GuessTrcRecord(Bytes file, std::uint64_t from, std::uint64_t limit);
