// Spans of one process that wait for the others of their trace.
//
// Shape    See OtlpRules. The memory of a span is counted with its texts.
// Owner    Owns the spans. Their names are views of the process's.
// Threads  One.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "quor/otlp/otlp_mapper.h"

struct HeldSpan {
  struct Event {
    std::uint64_t unixNs = 0;
    std::uint16_t attributes = 0;
    std::string text, stack;
  };

  std::string trace, id, parent;  // ids as bytes
  std::uint64_t start = 0, end = 0;
  std::uint16_t endAttributes = 0;
  std::string_view component, category, file;
  std::uint32_t line = 0;
  std::string beginText, stack, endText;
  std::vector<Event> events;

  std::size_t Bytes() const;
};

class SpanHolder {
 public:
  using Time = std::chrono::nanoseconds;

  // `isRoot`: no other span of its trace in this process is around it.
  void Hold(HeldSpan span, bool isRoot, Time now);
  // Those of the traces that are complete, silent or held for long, trace by trace.
  std::vector<HeldSpan> TakeReady(Time now, const OtlpRules& rules);
  std::vector<HeldSpan> TakeAll();
  std::size_t Bytes() const { return m_bytes; }
  std::size_t Spans() const { return m_spans; }

 private:
  struct Trace {
    std::vector<HeldSpan> spans;
    Time first{}, last{};
    bool hasRoot = false;
  };
  void Move(Trace& from, std::vector<HeldSpan>& to);

  std::map<std::string, Trace> m_traces;
  std::size_t m_bytes = 0, m_spans = 0;
};
