// What was made of traces, in order, and how a test looks into it.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "quor/otlp/out/out_sources.h"
#include "records/raw_trace.h"

using quor::otlp::KeyValue;
using quor::otlp::LogRecord;
using quor::otlp::Span;

class SentMessages final : public OutSink {
 public:
  struct Sent {
    bool isSpan = false;
    LogRecord log;
    Span span;
    std::string instance, component;
    OutWeight weight;
    // All of it, to compare.
    std::string Bytes() const {
      return (isSpan ? "span " + span.SerializeAsString() : "log " + log.SerializeAsString()) +
             instance + component;
    }
  };
  LogRecord& NewLog(const OutOrigin& origin, std::string_view component,
                    const OutWeight& weight) override {
    return Add(false, origin, component, weight).log;
  }
  Span& NewSpan(const OutOrigin& origin, std::string_view component,
                const OutWeight& weight) override {
    return Add(true, origin, component, weight).span;
  }
  const Span& SpanAt(std::size_t at) const {
    EXPECT_LT(at, all.size());
    EXPECT_TRUE(all.at(at).isSpan);
    return all.at(at).span;
  }
  const LogRecord& LogAt(std::size_t at) const {
    EXPECT_LT(at, all.size());
    EXPECT_FALSE(all.at(at).isSpan);
    return all.at(at).log;
  }
  std::deque<Sent> all;

 private:
  Sent& Add(bool isSpan, const OutOrigin& origin, std::string_view component,
            const OutWeight& weight) {
    Sent& sent = all.emplace_back();
    sent.isSpan = isSpan;
    sent.instance = origin.instance;
    sent.component = component;
    sent.weight = weight;
    return sent;
  }
};

template <class Message>
const quor::otlp::AnyValue* Find(const Message& message, const std::string& key) {
  for (const KeyValue& attribute : message.attributes())
    if (attribute.key() == key) return &attribute.value();
  return nullptr;
}
// -1: it has none.
template <class Message>
std::int64_t IntOf(const Message& message, const std::string& key) {
  const auto* const value = Find(message, key);
  return value ? value->int_value() : -1;
}
template <class Message>
std::string TextOf(const Message& message, const std::string& key) {
  const auto* const value = Find(message, key);
  return value ? value->string_value() : "none";
}

inline constexpr std::uint64_t kNsPerMillisecond = 1'000'000;

// A trace of one source at a moment, in nanoseconds since 2026-11-24.
inline OutTrace TraceAtNs(std::string_view thread, std::string_view text, std::uint64_t ns) {
  OutTrace trace;
  trace.machine = "web1";
  trace.app = "orders";
  trace.component = "Shop";
  trace.category = "Order";
  trace.process = "4711";
  trace.thread = thread;
  trace.file = "shop.cpp";
  trace.line = 42;
  trace.attributes = kAttributeInfo;
  trace.text = text;
  trace.date = PackDate(2026, 11, 24);
  const auto ms = static_cast<unsigned>(ns / kNsPerMillisecond);
  trace.time = PackTime(ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60, ms % 1000);
  trace.tic = (ns + 77'000) * 1000;
  return trace;
}
inline std::uint64_t MidnightNs() {
  return *UnixNanoOf(PackDate(2026, 11, 24), PackTime(0, 0, 0, 0));
}
inline OutTrace LossReport(std::string_view text) {
  OutTrace report = TraceAtNs("", text, 0);
  report.serial = OutSources::kOutReport;
  report.component = "Quor";
  report.category = "Loss";
  report.attributes = kAttributeWarn;
  return report;
}
