// Where the receiver's bodies go.
//
// Threads  One.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/bytes.h"

enum class OtlpSignal { Logs, Traces };

struct OtlpVerdict {
  // Taken: all of it is safe elsewhere, but for what was rejected. Malformed: nothing was taken,
  // and the same bytes will not be either. Full: nothing was taken, later it may be.
  enum class Kind { Taken, Malformed, Full };
  Kind kind = Kind::Taken;
  std::uint64_t rejected = 0;  // records
  std::string why = {};        // unless all is taken
  unsigned retryAfter = 1;     // Full: seconds, from 1 to 5, because clients wait for 10 at most
};

class OtlpSink {
 public:
  using Done = std::function<void(const OtlpVerdict&)>;
  // `body`: a message of protobuf, borrowed for the call. `machine`: of resources that name none.
  // Calls back once, now or later.
  virtual void Take(OtlpSignal signal, Bytes body, const std::string& machine, Done done) = 0;

 protected:
  ~OtlpSink() = default;
};
