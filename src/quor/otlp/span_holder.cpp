#include "quor/otlp/span_holder.h"

#include <algorithm>

std::size_t HeldSpan::Bytes() const {
  std::size_t bytes = sizeof *this + trace.capacity() + id.capacity() + parent.capacity() +
                      beginText.capacity() + stack.capacity() + endText.capacity();
  for (const Event& event : events)
    bytes += sizeof event + event.text.capacity() + event.stack.capacity();
  return bytes;
}

void SpanHolder::Hold(HeldSpan span, bool isRoot, Time now) {
  Trace& trace = m_traces[span.trace];
  if (trace.spans.empty()) {
    trace.first = now;
    trace.spans.reserve(4);  // to grow moves all of them
  }
  trace.last = now;
  trace.hasRoot = trace.hasRoot || isRoot;
  m_bytes += span.Bytes();
  ++m_spans;
  trace.spans.push_back(std::move(span));
}

std::vector<HeldSpan> SpanHolder::TakeReady(Time now, const OtlpRules& rules) {
  const auto isReady = [&](const Trace& trace) {
    return (rules.untilRoot && trace.hasRoot) || now - trace.last >= rules.silence ||
           now - trace.first >= rules.longest;
  };
  std::size_t ready = 0;
  for (const auto& [id, trace] : m_traces) ready += isReady(trace) ? trace.spans.size() : 0;
  std::vector<HeldSpan> spans;
  spans.reserve(ready);
  for (auto entry = m_traces.begin(); entry != m_traces.end();) {
    if (!isReady(entry->second)) {
      ++entry;
      continue;
    }
    Move(entry->second, spans);
    entry = m_traces.erase(entry);
  }
  return spans;
}

std::vector<HeldSpan> SpanHolder::TakeAll() {
  std::vector<HeldSpan> spans;
  for (auto& [id, trace] : m_traces) Move(trace, spans);
  m_traces.clear();
  return spans;
}

void SpanHolder::Move(Trace& from, std::vector<HeldSpan>& to) {
  for (HeldSpan& span : from.spans) {
    m_bytes -= span.Bytes();
    --m_spans;
    to.push_back(std::move(span));
  }
}
