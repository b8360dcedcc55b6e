// The ids of traces and spans. They follow from what the traces say, so they are the same when a
// block is sent again, and a collector can tell a double.
//
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// 16 bytes. `serial`: of the Begin of the outermost block.
std::string OutTraceId(std::string_view instance, std::string_view thread, std::uint64_t serial);
// 8 bytes. `serial`: of the Begin of the block.
std::string OutSpanId(std::string_view instance, std::uint64_t serial);
// 16 bytes for a source that has no id of its own, because it was read from a file.
std::string OutInstanceOf(std::string_view machine, std::string_view app, std::string_view process,
                          std::uint64_t first);
