// The trace that reports missing traces, at the place where they are missing.
//
// Shape    Component "Quor", category "Loss", severity Warn, text "N traces lost: reason", without
//          a number and without a tic count.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A data body: the names, with ids from 1 of its own, and the trace.
std::vector<std::uint8_t> LossTraceBody(const std::string& machine, std::uint64_t lost,
                                        const std::string& reason);
