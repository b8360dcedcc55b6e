// Reaching the service of a machine.
#pragma once

#include <asio/any_io_executor.hpp>
#include <chrono>
#include <string>

#include "quor/protocol/byte_stream.h"
#include "quor/protocol/machine.h"

// Calls back once, from the executor: a stream, or null and a reason. The local service is started
// when none listens and `mayStart` is set; its socket is then waited for until the deadline.
void Dial(const asio::any_io_executor& executor, const Machine& machine, bool mayStart,
          std::chrono::milliseconds deadline, Connected done);
