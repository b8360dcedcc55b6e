// The end of an operation that failed and whose caller may want to know why.
#pragma once

#include <string>
#include <utility>

// Leaves the reason in `why`, which may be null. Always false, so that it can be returned.
inline bool FailWith(std::string* why, std::string reason) {
  if (why) *why = std::move(reason);
  return false;
}
