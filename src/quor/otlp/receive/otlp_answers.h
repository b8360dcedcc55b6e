// The answers to exporters of OpenTelemetry.
//
// Shape    Exporters send a batch again after 429, 502, 503 and 504, and lose it after anything
//          else. So what may pass is 503, and 500 is never said. A body is the message that the
//          protocol asks for; plain words where the peer may not speak it.
// Threads  Pure.
#pragma once

#include <optional>

#include "quor/http/answer.h"
#include "quor/http/request_reader.h"
#include "quor/otlp/receive/otlp_sink.h"

HttpAnswer OtlpAnswerTo(const OtlpVerdict& verdict);
// With a reason, as google.rpc.Status.
HttpAnswer OtlpRefusal(int status, const std::string& why, unsigned retryAfter = 1);

std::optional<OtlpSignal> OtlpSignalOf(const HttpRequest& request);
// A request that is refused by its head alone.
std::optional<HttpAnswer> OtlpRefusalByHead(const HttpRequest& request);
