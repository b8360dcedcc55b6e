// Writes a .tcf file.
//
// Errors   By the result. What was written before a failure stays in the stream.
// Threads  Interface thread: it asks the applications' handles.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "quor/client/trace_config.h"

// The value in quotes, each backslash twice. Kept: a quote in the value stands as it is, the format
// has no other way. Safe: the reader looks for the end of a field after such quotes.
std::string QuoteTcfField(std::string_view value);

// The lines of a group, without line ends.
std::string TcfAppLine(std::string_view app);
// REQUIRES: `type` is trc_SinkFile or trc_SinkSocket.
std::string TcfSinkLine(trc_SinkTypes_e type, std::string_view name, std::string_view options);
std::string TcfTraceLine(std::string_view component, std::string_view category, unsigned settings);

// The options of a sink as a file keeps them: without the "node=" entry for a local server.
std::string TcfSinkOptions(trc_SinkTypes_e type, const std::string& name, std::string options);

enum class TcfWritten { Whole, NoHeader, Unwritable, UnsupportedSink };
// The message about it; empty for Whole.
const char* WordsOf(TcfWritten written);
// All applications, each line flushed.
TcfWritten WriteTcf(std::ostream& to, const std::list<QuorPtr<trace_App_i>>& apps);
