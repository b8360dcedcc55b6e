// A recorded call stack with the names of its functions.
//
// Shape    A line for each function, the newest first. A recorded frame has several lines where
//          functions were inlined, one if nothing is known of it (as it was recorded), and none if
//          it is at the top and belongs to the tracing library. The written form, in which it
//          passes between processes, has a line for each of its parts; no part has a control
//          character.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct NamedFrame {
  std::string text;      // "Charge(int) at /src/pay.cpp:12 (orders)"
  std::string recorded;  // the line of the frame
  std::string file;      // empty if it is not known
  unsigned line = 0;

  bool operator==(const NamedFrame&) const = default;
};

struct StackNames {
  std::vector<NamedFrame> frames;
  std::vector<std::string>
      missing;  // for each module what is missing, as a sentence without a stop

  bool operator==(const StackNames&) const = default;
};

std::string WriteNames(const StackNames& names);
// Nothing if it is not such a form.
std::optional<StackNames> ReadNames(std::string_view written);

// All frames as they were recorded.
StackNames WithoutNames(std::string_view stack);

// With "?" for each control character.
std::string OnOneLine(std::string text);
