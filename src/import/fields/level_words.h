// The levels of other logs as attributes of a trace.
//
// Severity Errors and worse are Error, warnings are Warn, all else is Info. What is for developers
//          (debug) has Developer too, and what comes very often (trace, verbose) also Verbose, so
//          that a filter tells them apart as in a traced program.
// Errors   Nothing for a word or number that is not known.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// What numbers mean.
enum class LevelNumbers {
  Any,     // below 8: of syslog; from 10 on: of pino
  Syslog,  // 0 emergency to 7 debug
  Pino,    // 10 trace, 20 debug, 30 info, 40 warn, 50 error, 60 fatal; bunyan has the same
  Python,  // 10 debug, 20 info, 30 warning, 40 error, 50 critical
  Otel,    // 1 to 24: trace, debug, info, warn, error, fatal, four numbers each
};

// A word in any case ("warning", "WARN", "W"), a number, or several of Info, Warn, Error, Developer
// and Verbose with commas or "+" between them.
std::optional<std::uint16_t> AttributesOfLevel(std::string_view level, LevelNumbers numbers);

// Of the severity of syslog, 0 to 7.
std::uint16_t AttributesOfSyslog(unsigned severity);
