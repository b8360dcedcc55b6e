// The applications of a sample file, and the texts of their traces.
//
// Shape    Tables that never change. In a text, %n is a small number, %N a large one, %c two
//          digits, %x eight hexadecimal digits, %m milliseconds, %u a person, %p a product and %a
//          a network address.
// Threads  Pure.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "sample/sample_random.h"

// A place in an application's source that traces.
struct SamplePoint {
  const char* component;
  const char* category;
  const char* function;
  const char* file;
  unsigned line;
  int attributes;
  const char* text;
};

struct SampleApp {
  const char* name;
  unsigned threads;  // per process
  bool ticCounts;    // an application without a fine clock sends zero
  std::span<const SamplePoint> blocks;
  std::span<const SamplePoint> messages;
};

struct SampleProcess {
  const char* machine;
  const SampleApp* app;
};

std::span<const SampleProcess> SampleProcesses();

// Appends the text with its placeholders filled in.
void AppendFilled(std::string& to, std::string_view text, SampleRandom& random);
