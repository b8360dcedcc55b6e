// Blocks whose Begin has come and whose End has not.
//
// Shape    Those of a thread lie one inside the other, the outermost first. An End closes the
//          innermost one, whatever its text is.
// Owner    Their texts are their own: the frame of the Begin has gone.
// Threads  Plain values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quor/otlp/out/out_times.h"

// What all sources of a sender may hold. A Begin beyond that is sent as a log, and so is its End.
constexpr std::size_t kOpenBlocksOfThread = 256;
constexpr std::size_t kOpenBlocks = 65'536;
constexpr std::size_t kOpenBlockBytes = 16u << 20;

struct OpenBlock {
  std::uint64_t serial = 0, start = 0, tic = 0;
  std::uint64_t innerEnd = 0;  // the last end of a block inside; 0: none
  std::string spanId, name, component, category, file, stack;
  std::string machine, app, process;
  std::uint32_t line = 0;
  int attributes = 0;
  bool error = false;  // an Error stood directly inside

  std::size_t Size() const {
    return sizeof(OpenBlock) + name.size() + component.size() + category.size() + file.size() +
           stack.size() + machine.size() + app.size() + process.size();
  }
};

struct OpenThread {
  std::string traceId;
  OutClock clock;            // of the outermost block: all blocks in it nest by its moment
  std::uint64_t beyond = 0;  // Begins that were sent as logs, inside the innermost block
  std::vector<OpenBlock> blocks;
};

// Of all sources of a sender.
struct OpenTotals {
  std::size_t blocks = 0, bytes = 0;
  std::uint64_t refused = 0;  // Begins beyond the bounds

  bool HasRoom(const OpenThread& thread, std::size_t size) const {
    return thread.blocks.size() < kOpenBlocksOfThread && blocks < kOpenBlocks &&
           bytes + size <= kOpenBlockBytes;
  }
};
