// The values of one JSON object with the paths to them, in their order.
//
// Shape    {"a":{"b":1},"c":[true]} has "a.b" with 1 and "c.0" with true. Empty objects and arrays
//          have no values.
//          Lines that other writers get nearly right are read too: malformed UTF-8 and half a
//          pair of surrogates are U+FFFD, control characters in strings stand for themselves, and
//          NaN, Infinity and numbers beyond all bounds are strings.
// Errors   False: no object, nested deeper than kDepthMax, or stopped by the taker. Some values may
//          have been given before.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class JsonKind { Null, Bool, Number, String };

class FlatJsonTaker {
 public:
  // Numbers and words as they stand in the line, a string without its escapes. False ends it.
  virtual bool OnValue(const std::string& path, JsonKind kind, std::string_view value) = 0;
  // The line is not right, and is read once more: what was given of it does not count.
  virtual void OnAgain() = 0;

 protected:
  ~FlatJsonTaker() = default;
};

constexpr std::size_t kJsonDepthMax = 32;

bool ReadFlatJson(std::string_view line, FlatJsonTaker& taker);

// What is told of so many lines that were read once more; nothing of none.
std::vector<std::string> MendedNote(std::uint64_t lines);
