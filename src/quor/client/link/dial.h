// Connecting to the service of a machine.
#pragma once

#include <asio/any_io_executor.hpp>
#include <chrono>
#include <string>

#include "quor/protocol/byte_stream.h"
#include "quor/protocol/machine.h"

// Calls back once, on the executor: a stream, or null and a reason. If no local service listens and
// `mayStart` is set, it is started, and the call waits for its socket until the deadline.
void Dial(const asio::any_io_executor& executor, const Machine& machine, bool mayStart,
          std::chrono::milliseconds deadline, Connected done);
