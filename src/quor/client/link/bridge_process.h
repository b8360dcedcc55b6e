// The process that reads what a cluster stores, for one monitor: "quor-bridge read ADDRESS".
//
// Shape    Its standard input is one end of a pair of sockets, and the stream is the other. It
//          speaks as a machine's service does. It is in a session of its own, so that a key of a
//          terminal does not end it.
// Owner    The stream: its end ends the process.
// Errors   Null and a reason: the program is not installed, or the system has no room for it.
// Threads  The one that runs the executor.
#pragma once

#include <asio/any_io_executor.hpp>
#include <string>

#include "quor/protocol/byte_stream.h"

// Calls back once, on the executor.
void StartBridge(const asio::any_io_executor& executor, const std::string& address, Connected done);
