// Where logs and spans go.
//
// Shape    The weight of a message is what is lost with it.
// Owner    The sink owns the message, which is new and empty. It is filled before the next call.
#pragma once

#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/out/out_trace.h"

struct OutWeight {
  std::uint64_t traces = 0;  // in it: 0 for reports, 1 for logs and unfinished spans, 2 for spans
  std::uint64_t lost = 0;    // that it reports
};

class OutSink {
 public:
  virtual quor::otlp::LogRecord& NewLog(const OutOrigin& origin, std::string_view component,
                                        const OutWeight& weight) = 0;
  virtual quor::otlp::Span& NewSpan(const OutOrigin& origin, std::string_view component,
                                    const OutWeight& weight) = 0;

 protected:
  ~OutSink() = default;
};
