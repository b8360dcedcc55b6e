// What a row shows of the mark and the note of its trace.
//
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <optional>

#include "controls/text/cell_parts.h"
#include "documents/trace_doc.h"

// A longer note ends in "...".
constexpr std::size_t kShownNoteBytes = 2000;

RowMark RowMarkOf(const WhereMark& said);
// Nothing: it has neither.
std::optional<RowMark> RowMarkOf(CTraceDoc& document, const TraceEvent_i& trace);
