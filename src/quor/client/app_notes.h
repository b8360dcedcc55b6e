// What a machine says of its applications beside their traces and sinks.
//
// Threads  Plain values.
#pragma once

#include <string>

// A line about what the environment of a running instance set, or what is wrong with it.
struct trace_StartNote_t {
  unsigned pid;
  std::string text;
};

struct trace_Waiting_t {
  std::string app, kept;  // rules
  bool prepared;          // settings or a sink for the next instance
};

// The sink of a running application is a machine that cannot be reached.
struct trace_FailingSink_t {
  std::string app, machine, why;
};
