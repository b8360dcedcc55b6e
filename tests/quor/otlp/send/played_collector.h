// A collector that counts what it takes.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quor/http/unpack.h"
#include "quor/otlp/otlp.pb.h"
#include "quor/otlp/send/send_queue.h"

// What a collector has, doubles taken away by their ids.
class PlayedCollector {
 public:
  void Take(const SendQueue::Request& request) {
    Take(request.kind, request.isPacked, request.body);
  }
  void Take(OutRequest::Kind kind, bool isPacked, const std::string& body) {
    std::vector<std::uint8_t> bytes(body.begin(), body.end());
    if (isPacked) {
      const std::vector<std::uint8_t> packed = bytes;
      bytes.clear();
      ASSERT_EQ(Unpack(BodyCoding::Gzip, packed, 16u << 20, bytes, nullptr), Unpacking::Done);
    }
    const int size = static_cast<int>(bytes.size());
    if (kind == OutRequest::Kind::Logs) {
      quor::otlp::ExportLogs logs;
      ASSERT_TRUE(logs.ParseFromArray(bytes.data(), size));
      for (const auto& resource : logs.resource_logs())
        for (const auto& scope : resource.scope_logs())
          for (const auto& log : scope.log_records()) TakeLog(InstanceOf(resource), log);
    } else {
      quor::otlp::ExportSpans spans;
      ASSERT_TRUE(spans.ParseFromArray(bytes.data(), size));
      for (const auto& resource : spans.resource_spans())
        for (const auto& scope : resource.scope_spans())
          for (const auto& span : scope.spans()) TakeSpan(span);
    }
  }
  std::uint64_t Sum() const { return m_logs.size() + m_spans + m_lost; }
  std::uint64_t Lost() const { return m_lost; }
  std::size_t Doubles() const { return m_doubles; }

 private:
  template <class Message>
  static const quor::otlp::AnyValue* Find(const Message& message, const std::string& key) {
    for (const auto& attribute : message.attributes())
      if (attribute.key() == key) return &attribute.value();
    return nullptr;
  }
  template <class OfResource>
  static std::string InstanceOf(const OfResource& of) {
    const auto* const value = Find(of.resource(), "service.instance.id");
    return value ? value->string_value() : "";
  }
  void TakeLog(const std::string& instance, const quor::otlp::LogRecord& log) {
    if (const auto* const lost = Find(log, "quor.lost"))
      m_lost += static_cast<std::uint64_t>(lost->int_value());
    else if (const auto* const serial = Find(log, "quor.serial"))
      m_doubles += !m_logs.insert({instance, serial->int_value()}).second;
  }
  void TakeSpan(const quor::otlp::Span& span) {
    if (!m_ids.insert(span.span_id()).second)
      ++m_doubles;
    else
      m_spans += Find(span, "quor.unfinished") ? 1 : 2;
  }
  std::set<std::pair<std::string, std::int64_t>> m_logs;
  std::set<std::string> m_ids;
  std::uint64_t m_spans = 0, m_lost = 0;
  std::size_t m_doubles = 0;
};
