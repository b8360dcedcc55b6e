#include "quor/otlp/out/out_requests.h"

#include "quor/otlp/out/out_messages.h"

namespace {

// Texts of others may have any bytes, so each has its length behind it.
void AppendKey(std::string& key, std::string_view text) {
  const std::uint64_t size = text.size();
  key += text;
  key.append(reinterpret_cast<const char*>(&size), sizeof size);
}

quor::otlp::ResourceLogs* AddResource(quor::otlp::ExportLogs& body) {
  return body.add_resource_logs();
}
quor::otlp::ResourceSpans* AddResource(quor::otlp::ExportSpans& body) {
  return body.add_resource_spans();
}
quor::otlp::ScopeLogs* AddScope(quor::otlp::ResourceLogs& resource) {
  return resource.add_scope_logs();
}
quor::otlp::ScopeSpans* AddScope(quor::otlp::ResourceSpans& resource) {
  return resource.add_scope_spans();
}

template <class Growing>
auto& ScopeIn(Growing& growing, const OutOrigin& origin, std::string_view component) {
  std::string key;
  for (const std::string_view text : {origin.instance, origin.machine, origin.app, origin.process})
    AppendKey(key, text);
  const std::size_t ofResource = key.size();
  AppendKey(key, component);
  if (growing.lastScope && growing.lastKey == key) return *growing.lastScope;
  auto& scope = growing.scopes[key];
  if (!scope) {
    auto& resource = growing.resources[key.substr(0, ofResource)];
    if (!resource) {
      resource = AddResource(growing.body);
      FillResource(origin, *resource->mutable_resource());
    }
    scope = AddScope(*resource);
    SetOutText(scope->mutable_scope()->mutable_name(), component);
  }
  growing.lastKey = std::move(key);
  growing.lastScope = scope;
  return *scope;
}

template <class Growing>
bool IsFull(Growing& growing) {
  if (growing.last) growing.bytes += growing.last->ByteSizeLong();
  growing.last = nullptr;
  return growing.messages >= OutRequests::kMessagesOfRequest ||
         growing.bytes >= OutRequests::kBytesOfRequest;
}

template <class Growing, class Message>
Message& Count(Growing& growing, const OutWeight& weight, Message* message) {
  ++growing.messages;
  growing.weight.traces += weight.traces;
  growing.weight.lost += weight.lost;
  growing.last = message;
  return *message;
}

}  // namespace

quor::otlp::LogRecord& OutRequests::NewLog(const OutOrigin& origin, std::string_view component,
                                           const OutWeight& weight) {
  if (IsFull(m_logs)) Give(OutRequest::Kind::Logs, m_logs);
  return Count(m_logs, weight, ScopeIn(m_logs, origin, component).add_log_records());
}

quor::otlp::Span& OutRequests::NewSpan(const OutOrigin& origin, std::string_view component,
                                       const OutWeight& weight) {
  if (IsFull(m_spans)) Give(OutRequest::Kind::Spans, m_spans);
  return Count(m_spans, weight, ScopeIn(m_spans, origin, component).add_spans());
}

template <class Growing>
void OutRequests::Give(OutRequest::Kind kind, Growing& growing) {
  if (growing.messages == 0) return;
  OutRequest request;
  request.kind = kind;
  growing.body.SerializeToString(&request.body);
  request.messages = growing.messages;
  request.weight = growing.weight;
  growing = {};
  m_receive(std::move(request));
}

void OutRequests::Flush() {
  Give(OutRequest::Kind::Logs, m_logs);
  Give(OutRequest::Kind::Spans, m_spans);
}
