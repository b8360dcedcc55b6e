#include "quor/otlp/receive/otlp_answers.h"

#include <algorithm>

#include "quor/http/unpack.h"
#include "quor/otlp/otlp.pb.h"

namespace {

constexpr const char* kProtobuf = "application/x-protobuf";

std::string_view PathOf(const HttpRequest& request) {
  return request.target.substr(0, request.target.find('?'));
}

bool IsProtobuf(const HttpRequest& request) {
  const std::string_view type = request.headers.Value("content-type");
  return IsSameWord(TrimmedBlanks(type.substr(0, type.find(';'))), kProtobuf);
}

// The canonical code that goes with a status of HTTP.
std::int32_t CodeOf(int status) {
  switch (status) {
    case 408:
      return 4;
    case 413:
    case 431:
      return 8;
    case 501:
    case 505:
      return 12;
    case 503:
      return 14;
    default:
      return 3;
  }
}

HttpAnswer InWords(int status, const std::string& why) {
  HttpAnswer answer{status, "text/plain; charset=utf-8", why + "\n"};
  if (status == 405) answer.headers = "Allow: POST\r\n";
  return answer;
}

}  // namespace

HttpAnswer OtlpRefusal(int status, const std::string& why, unsigned retryAfter) {
  quor::otlp::RpcStatus message;
  message.set_code(CodeOf(status));
  message.set_message(why);
  HttpAnswer answer{status, kProtobuf, message.SerializeAsString()};
  if (status == 503)
    answer.headers = "Retry-After: " + std::to_string(std::clamp(retryAfter, 1u, 5u)) + "\r\n";
  return answer;
}

HttpAnswer OtlpAnswerTo(const OtlpVerdict& verdict) {
  if (verdict.kind == OtlpVerdict::Kind::Malformed) return OtlpRefusal(400, verdict.why);
  if (verdict.kind == OtlpVerdict::Kind::Full)
    return OtlpRefusal(503, verdict.why, verdict.retryAfter);
  quor::otlp::ExportAnswer message;
  if (verdict.rejected > 0) {
    message.mutable_partial_success()->set_rejected(static_cast<std::int64_t>(verdict.rejected));
    message.mutable_partial_success()->set_error_message(verdict.why);
  }
  return {200, kProtobuf, message.SerializeAsString()};
}

std::optional<OtlpSignal> OtlpSignalOf(const HttpRequest& request) {
  const std::string_view path = PathOf(request);
  if (path == "/v1/logs") return OtlpSignal::Logs;
  if (path == "/v1/traces") return OtlpSignal::Traces;
  return std::nullopt;
}

// Browsers say where a page is from. None is to write traces of this machine.
std::optional<HttpAnswer> OtlpRefusalByHead(const HttpRequest& request) {
  if (PathOf(request) == "/v1/metrics") return InWords(404, "metrics are not taken here");
  if (!OtlpSignalOf(request))
    return InWords(404, "only /v1/logs and /v1/traces of OpenTelemetry are here");
  if (request.method != "POST") return InWords(405, "records are sent with POST");
  if (request.headers.Has("origin")) return InWords(403, "pages of a browser may not send here");
  if (!IsProtobuf(request))
    return InWords(415,
                   "only application/x-protobuf is taken: "
                   "OTEL_EXPORTER_OTLP_PROTOCOL=http/protobuf");
  if (request.headers.Count("content-encoding") > 1 ||
      BodyCodingOf(request.headers.Value("content-encoding")) == BodyCoding::Unknown)
    return InWords(415, "a body may be packed with gzip or deflate, once");
  return std::nullopt;
}
