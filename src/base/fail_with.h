// Returns false with a reason, for operations that can fail.
#pragma once

#include <string>
#include <utility>

// Stores the reason in `why`, which may be null. Always false, so that it can be returned.
inline bool FailWith(std::string* why, std::string reason) {
  if (why) *why = std::move(reason);
  return false;
}
