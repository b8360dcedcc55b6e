// The steps that a cell offers: each gives a text, which WithStep adds to the one in force.
//
// Shape    Values are those of the trace, any bytes. A value that is too long for a filter text
//          gives one that WithStep refuses.
// Errors   Nothing: the value is none for the field (a line that is no number).
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "where/text/where_fields.h"

// `component == Sql`, `pid == 4711 and account == alice`; of a flag: `verbose`. A number is given
// in decimal digits, a severity by its word, a time as ISO 8601.
std::optional<std::string> OnlyThis(WhereField field, std::string_view value);
// The contrary: `component != Sql`, `not (pid == 4711 and account == alice)`.
std::optional<std::string> HideThis(WhereField field, std::string_view value);

// The names of one thread as the trace has them.
struct WhereThread {
  std::string_view machine, process, thread;
};
std::string OnlyThisThread(const WhereThread& thread);

// Of moments; both ends belong to it, as whole milliseconds where they are such.
std::optional<std::string> OnlyBetween(std::int64_t firstNanoseconds, std::int64_t lastNanoseconds);
// The same so far from one moment. Nothing for a time outside of the years 1678 to 2261.
std::optional<std::string> OnlyAroundTime(std::int64_t utcNanoseconds, std::int64_t nanoseconds);
// In units of the tic, cut at its ends.
std::string OnlyAroundTic(std::uint64_t tic, std::uint64_t distance);

// `(text) and step` with the least brackets, and without what both say; `text` may be empty.
// Nothing: `text` is no filter text, or both are too long for one.
std::optional<std::string> WithStep(std::string_view text, std::string_view step);
