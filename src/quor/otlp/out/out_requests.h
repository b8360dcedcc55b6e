// Logs and spans as the requests of OpenTelemetry.
//
// Shape    Messages of one resource and one scope stand together, in the order of their first one.
// A
//          request is of one kind, and has at most kMessagesOfRequest messages and few more bytes
//          than kBytesOfRequest.
// Owner    What is given out is the receiver's.
// Threads  One.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "quor/otlp/out/out_sink.h"

struct OutRequest {
  enum class Kind { Logs, Spans };
  Kind kind = Kind::Logs;
  std::string body;  // protobuf: ExportLogs or ExportSpans
  std::uint32_t messages = 0;
  OutWeight weight;  // of all messages
};

// A request of one kind while it grows.
template <class Export, class OfResource, class OfScope, class Message>
struct GrowingRequest {
  Export body;
  // By what names them. The bodies of both keep their addresses.
  std::unordered_map<std::string, OfResource*> resources;
  std::unordered_map<std::string, OfScope*> scopes;
  std::string lastKey;
  OfScope* lastScope = nullptr;
  const Message* last = nullptr;  // it is filled after it was given out
  std::size_t bytes = 0;          // without that one
  std::uint32_t messages = 0;
  OutWeight weight;
};

class OutRequests final : public OutSink {
 public:
  static constexpr std::uint32_t kMessagesOfRequest = 512;
  static constexpr std::size_t kBytesOfRequest = 1u << 20;
  using Receive = std::function<void(OutRequest)>;

  explicit OutRequests(Receive receive) : m_receive(std::move(receive)) {}

  quor::otlp::LogRecord& NewLog(const OutOrigin& origin, std::string_view component,
                                const OutWeight& weight) override;
  quor::otlp::Span& NewSpan(const OutOrigin& origin, std::string_view component,
                            const OutWeight& weight) override;
  std::uint32_t Waiting() const { return m_logs.messages + m_spans.messages; }
  // Gives out what has not been yet.
  void Flush();

 private:
  using Logs = GrowingRequest<quor::otlp::ExportLogs, quor::otlp::ResourceLogs,
                              quor::otlp::ScopeLogs, quor::otlp::LogRecord>;
  using Spans = GrowingRequest<quor::otlp::ExportSpans, quor::otlp::ResourceSpans,
                               quor::otlp::ScopeSpans, quor::otlp::Span>;
  template <class Growing>
  void Give(OutRequest::Kind kind, Growing& growing);

  const Receive m_receive;
  Logs m_logs;
  Spans m_spans;
};
