// Writes the traces of several documents as one, in the order of time.
//
// Errors   False and a reason: a write failed, or together they have more names than a file can.
// Threads  One. An interrupt ends it with success.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "documents/trace_doc.h"
#include "records/trc_writer.h"

// `look` is called every now and then with the traces written; false ends it.
bool MergeTraces(const std::vector<const CTraceDoc*>& documents, TrcWriter& writer,
                 const std::function<bool(std::uint64_t)>& look, std::string* why);
