// The fields of logs, spans and resources of OpenTelemetry.
//
// Shape    All texts become well-formed UTF-8: a receiver refuses a whole request with another one.
// Threads  Pure.
#pragma once

#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/out/open_block.h"
#include "quor/otlp/out/out_trace.h"

void SetOutText(std::string* to, std::string_view text);

void FillResource(const OutOrigin& origin, quor::otlp::Resource& resource);
// `time`: nanoseconds since 1970; 0: unknown. `inside`: null, or the thread whose innermost block
// it stands in.
void FillLog(const OutTrace& trace, std::uint64_t time, const OpenThread* inside,
             quor::otlp::LogRecord& log);
void AddLost(std::uint64_t lost, quor::otlp::LogRecord& log);

// The innermost block of the thread. `last`: its End, or null if it has none.
void FillSpan(const OpenThread& thread, std::string_view name, std::uint64_t end,
              const OutTrace* last, quor::otlp::Span& span);
