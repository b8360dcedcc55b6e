// The one way in which an operation fails with a reason for the user.
//
// It returns false, null or nothing, and leaves the reason in its `std::string* why`, which may be
// null. It ends with `return FailWith(why, ...)`, or returns what an operation inside it returned.
// It never writes to `why` itself.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

// Stores the reason.
inline bool FailWith(std::string* why, std::string reason) {
  if (why) *why = std::move(reason);
  return false;
}

// The same for an operation that does not return a bool: `nothing` is null, nullopt or a state.
template <class Nothing>
Nothing FailWith(std::string* why, std::string reason, Nothing nothing) {
  FailWith(why, std::move(reason));
  return nothing;
}

// "Permission denied": the system's words for an error number.
inline std::string SystemReason(int error = errno) {
  return std::generic_category().message(error);
}

// "/etc/x: Permission denied".
inline bool FailOn(std::string* why, const std::string& path) {
  return FailWith(why, path + ": " + SystemReason());
}
