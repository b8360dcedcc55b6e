// A filter text that a service evaluates for a monitor, where the traces come from.
//
// The service knows each trace as it comes, and neither the document of the monitor nor its zone.
// So it takes no `delta`, no `end`, no marks and notes, and no time without a zone. It has one
// thread for all its clients, so it takes only short texts.
//
// Errors   False or nothing, and an error with its place.
// Threads  Pure, but for the zone of this machine.
#pragma once

#include <optional>

#include "where/text/where_parser.h"

constexpr std::size_t kSourceTextMax = 4096;         // bytes
constexpr std::size_t kSourceTestsMax = 32;          // fields that are compared
constexpr std::size_t kSourceExpressionsMax = 4;     // behind `matches`
constexpr std::size_t kSourceExpressionBytes = 256;  // each of them

// For the service: the tree of a text that it takes.
std::optional<WhereExpr> ParseAtSource(std::string_view text, WhereError& error);
// For the monitor: the text for the service, in its normal form, its times with their zone. `utc`:
// that of a time without one, else it is this machine's.
std::optional<std::string> TextAtSource(const WhereExpr& expr, bool utc, WhereError& error);
