// What an answer of a collector means for the request that it was given to.
//
// Threads  Pure.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "quor/http/client/http_client.h"

struct JudgedAnswer {
  enum class Kind { Taken, Again, Lost };
  Kind kind = Kind::Again;
  std::uint64_t rejected = 0;  // messages of a request that was taken
  std::string reason;          // why again, lost or rejected: the same for the same cause
  std::string words;           // of the collector; "": none
  std::optional<std::chrono::seconds> after;  // when it wants to be asked again
};

// `date`: of now, in seconds since 1970.
JudgedAnswer JudgeAnswer(const HttpResult& result, std::time_t date);

// Retry-After: seconds, or a date of HTTP. A date that has passed: 0.
std::optional<std::chrono::seconds> ReadRetryAfter(std::string_view text, std::time_t date);
