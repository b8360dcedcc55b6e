// One process that sends logs and spans: their records, its names, its tics and its lanes.
//
// Owner    Borrows everything. Holds spans: see OtlpMapper.
// Threads  One.
#pragma once

#include <list>
#include <set>
#include <string>

#include "quor/lanes/span_lanes.h"
#include "quor/otlp/otlp_names.h"
#include "quor/otlp/otlp_tics.h"
#include "quor/otlp/span_holder.h"

class OtlpProcess {
 public:
  using Time = std::chrono::nanoseconds;

  // `instance`: what the service calls this instance of itself; may be empty.
  OtlpProcess(std::string instance, OtlpTaker& taker, OtlpCounts& counts)
      : m_instance(std::move(instance)), m_taker(taker), m_counts(counts), m_names(counts) {}
  // REQUIRES: the source stays valid.
  void SetSource(const OtlpSource& source) { m_source = &source; }
  const OtlpSource& Source() const { return *m_source; }
  const std::string& Instance() const { return m_instance; }

  // A record of what the resource says, `text`, with the next log or span. Once for each text.
  void SayResource(const std::string& text);
  void Take(const quor::otlp::Scope& scope, const quor::otlp::LogRecord& log,
            const OtlpArrival& arrival);
  void Hold(const quor::otlp::Scope& scope, const quor::otlp::Span& span,
            const OtlpArrival& arrival);
  void GiveReady(Time now, const OtlpRules& rules) { GiveSpans(m_holder.TakeReady(now, rules)); }
  void GiveAll() { GiveSpans(m_holder.TakeAll()); }

  const SpanHolder& Held() const { return m_holder; }
  // For whoever has several.
  Time lastUse{};
  std::list<OtlpProcess*>::iterator place;

 private:
  static constexpr std::size_t kResourcesMax = 8;

  void GiveResource(std::uint64_t unixNs);
  void GiveSpans(std::vector<HeldSpan> spans);
  void GiveStep(const LaneStep& step, HeldSpan& span);
  // Its text and stack may be changed.
  void Give(OtlpRecord& record, std::string& text, std::string& stack);
  std::string_view Kept(std::string& text);
  void AddEvents(const quor::otlp::Span& span, std::uint64_t otherwise, HeldSpan& held);

  const OtlpSource* m_source = nullptr;
  const std::string m_instance;
  OtlpTaker& m_taker;
  OtlpCounts& m_counts;
  OtlpNames m_names;
  OtlpTics m_tics;
  SpanHolder m_holder;
  SpanLanes m_lanes;
  std::set<std::string> m_resources;  // what was said
  std::string m_toSay;
  std::string m_text, m_stack, m_more, m_lane;  // of the record that is made
};
