#include "quor/otlp/otlp_process.h"

#include <chrono>
#include <unordered_map>

#include "base/text.h"
#include "quor/otlp/otlp_attributes.h"
#include "quor/otlp/otlp_severity.h"
#include "quor/otlp/otlp_text.h"
#include "records/raw_trace.h"

using quor::otlp::LogRecord;
using quor::otlp::Scope;
using quor::otlp::Span;

namespace {

constexpr std::uint32_t kStatusError = 2;
constexpr std::uint32_t kRemoteParent = 0x300;  // it is known whether, and the parent is elsewhere

void SetMoment(std::uint64_t unixNs, OtlpRecord& record) {
  using namespace std::chrono;
  constexpr std::uint64_t kMs = 1'000'000, kDayMs = 86'400'000;
  const std::uint64_t ms = unixNs / kMs;
  const year_month_day date(sys_days(days(static_cast<int>(ms / kDayMs))));
  const auto ofDay = static_cast<unsigned>(ms % kDayMs);
  record.unixNs = unixNs;
  record.date = PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                         static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  record.time = PackTime(ofDay / 3'600'000, ofDay / 60'000 % 60, ofDay / 1000 % 60, ofDay % 1000);
}

// Most texts are not longer than this, so that they grow once.
constexpr std::size_t kUsualText = 120;

// The id of a span within its trace, borrowed.
struct SpanKey {
  std::string_view trace, id;
  bool operator==(const SpanKey&) const = default;
};
struct SpanKeyHash {
  std::size_t operator()(const SpanKey& key) const {
    const std::hash<std::string_view> hash;
    return hash(key.trace) * 31 + hash(key.id);
  }
};

std::string_view OrElse(std::string_view text, std::string_view otherwise) {
  return text.empty() ? otherwise : text;
}

std::string_view KindName(std::uint32_t kind) {
  constexpr std::string_view kNames[] = {"Span",   "Internal", "Server",
                                         "Client", "Producer", "Consumer"};
  return kNames[kind < std::size(kNames) ? kind : 0];
}

std::string EndTextOf(const Span& span) {
  std::string text = "End: ";
  text += span.name();
  if (span.status().code() == kStatusError)
    AppendAttribute(text, "status", OrElse(span.status().message(), "ERROR"));
  for (const Span::Link& link : span.links()) {
    AppendId(text, "link", link.trace_id());
    AppendId(text, "to", link.span_id());
  }
  AppendDropped(text, span.dropped_events_count(), "events");
  AppendDropped(text, span.dropped_links_count(), "links");
  if (span.end_time_unix_nano() == 0)
    text += " (no end time)";
  else if (span.end_time_unix_nano() < span.start_time_unix_nano())
    text += " (ended before it began)";
  return text;
}

}  // namespace

void OtlpProcess::SayResource(const std::string& text) {
  if (text.empty() || m_resources.size() == kResourcesMax || m_resources.contains(text)) return;
  m_resources.insert(text);
  m_toSay = text;
}

void OtlpProcess::GiveResource(std::uint64_t unixNs) {
  if (m_toSay.empty()) return;
  OtlpRecord record;
  SetMoment(unixNs, record);
  record.attributes = kAttributeInfo;
  record.component = "Otlp";
  record.category = "Resource";
  record.thread = "0";
  m_text = "resource:" + m_toSay;
  m_toSay.clear();
  m_stack.clear();
  Give(record, m_text, m_stack);
}

void OtlpProcess::Take(const Scope& scope, const LogRecord& log, const OtlpArrival& arrival) {
  OtlpRecord record;
  std::uint64_t time = log.time_unix_nano();
  if (time == 0) time = log.observed_time_unix_nano();
  if (time == 0) time = arrival.unixNs;
  GiveResource(time);
  SetMoment(time, record);
  m_more.clear();
  OtlpAttributes attributes(log.attributes());
  record.component = m_names.Keep(OtlpNames::Component, OrElse(scope.name(), "Otlp"), m_more);
  record.category = m_names.Keep(OtlpNames::Category, OrElse(log.event_name(), "Log"), m_more);
  record.thread = m_names.Keep(OtlpNames::Thread, OrElse(attributes.Thread(), "0"), m_more);
  record.file = m_names.Keep(OtlpNames::File, attributes.File(), m_more);
  record.line = attributes.Line();
  m_stack = attributes.Stack();
  const OtlpSeverity severity = SeverityOf(log.severity_number(), log.severity_text());
  record.attributes = severity.attributes;
  m_text = severity.word;
  if (!m_text.empty() && log.has_body()) m_text.push_back(' ');
  AppendPlain(m_text, log.body());
  attributes.AppendOthers(m_text);
  AppendDropped(m_text, log.dropped_attributes_count());
  AppendId(m_text, "trace", log.trace_id());
  AppendId(m_text, "span", log.span_id());
  m_text += m_more;
  ++m_counts.logs;
  Give(record, m_text, m_stack);
}

void OtlpProcess::Hold(const Scope& scope, const Span& span, const OtlpArrival& arrival) {
  HeldSpan held;
  held.trace = span.trace_id();
  held.id = span.span_id();
  held.parent = span.parent_span_id();
  held.start = span.start_time_unix_nano();
  held.end = span.end_time_unix_nano();
  if (held.start == 0) held.start = held.end != 0 ? held.end : arrival.unixNs;
  if (held.end == 0) held.end = arrival.unixNs;
  GiveResource(held.start);
  m_more.clear();
  OtlpAttributes attributes(span.attributes());
  held.component = m_names.Keep(OtlpNames::Component, OrElse(scope.name(), "Otlp"), m_more);
  held.category = m_names.Keep(OtlpNames::Category, KindName(span.kind()), m_more);
  held.file = m_names.Keep(OtlpNames::File, attributes.File(), m_more);
  held.line = attributes.Line();
  held.stack = attributes.Stack();
  held.beginText.reserve(kUsualText);
  held.beginText = "Begin: ";
  held.beginText += span.name();
  attributes.AppendOthers(held.beginText);
  AppendDropped(held.beginText, span.dropped_attributes_count());
  AppendId(held.beginText, "trace", held.trace);
  AppendId(held.beginText, "span", held.id);
  held.beginText += m_more;
  if (span.start_time_unix_nano() == 0) held.beginText += " (no start time)";
  held.endText = EndTextOf(span);
  held.endAttributes = span.status().code() == kStatusError ? kAttributeError : kAttributeInfo;
  AddEvents(span, arrival.unixNs, held);
  ++m_counts.spans;
  const bool isRoot = held.parent.find_first_not_of('\0') == held.parent.npos ||
                      (span.flags() & kRemoteParent) == kRemoteParent;
  m_holder.Hold(std::move(held), isRoot, arrival.now);
}

void OtlpProcess::AddEvents(const Span& span, std::uint64_t otherwise, HeldSpan& held) {
  for (const Span::Event& event : span.events()) {
    HeldSpan::Event& kept = held.events.emplace_back();
    kept.unixNs = event.time_unix_nano() != 0 ? event.time_unix_nano() : otherwise;
    kept.attributes = event.name() == "exception" ? kAttributeError : kAttributeInfo;
    OtlpAttributes attributes(event.attributes());
    kept.stack = attributes.Stack();
    kept.text = "Event: " + event.name();
    attributes.AppendOthers(kept.text);
    AppendDropped(kept.text, event.dropped_attributes_count());
    ++m_counts.events;
  }
}

void OtlpProcess::GiveSpans(std::vector<HeldSpan> spans) {
  if (spans.empty()) return;
  std::unordered_map<SpanKey, std::size_t, SpanKeyHash> places;  // the first one of an id
  places.reserve(spans.size());
  for (std::size_t at = 0; at < spans.size(); ++at)
    places.emplace(SpanKey{spans[at].trace, spans[at].id}, at);
  std::vector<LaneSpan> set;
  set.reserve(spans.size());
  for (const HeldSpan& span : spans) {
    LaneSpan& placed = set.emplace_back(LaneSpan{span.start, span.end, LaneSpan::kNoParent, {}});
    const auto parent = places.find(SpanKey{span.trace, span.parent});
    if (!span.parent.empty() && parent != places.end()) placed.parent = parent->second;
    for (const HeldSpan::Event& event : span.events) placed.moments.push_back(event.unixNs);
  }
  for (const LaneStep& step : m_lanes.Place(set)) GiveStep(step, spans[step.span]);
}

void OtlpProcess::GiveStep(const LaneStep& step, HeldSpan& span) {
  OtlpRecord record;
  m_lane = "lane " + std::to_string(step.lane + 1);
  record.thread = m_lane;
  record.component = span.component;
  record.category = span.category;
  record.file = "";
  if (step.kind == LaneStep::Begin) {
    SetMoment(span.start, record);
    record.attributes = kAttributeInfo;
    record.file = span.file;
    record.line = span.line;
    Give(record, span.beginText, span.stack);
  } else if (step.kind == LaneStep::End) {
    SetMoment(std::max(span.start, span.end), record);
    record.attributes = span.endAttributes;
    m_stack.clear();
    Give(record, span.endText, m_stack);
  } else {
    HeldSpan::Event& event = span.events[step.moment];
    SetMoment(event.unixNs, record);
    record.attributes = event.attributes;
    Give(record, event.text, event.stack);
  }
}

void OtlpProcess::Give(OtlpRecord& record, std::string& text, std::string& stack) {
  record.text = Kept(text);
  record.stack = Kept(stack);
  if (!record.file.data()) record.file = "";
  record.tic = m_tics.Of(record.unixNs);
  ++m_counts.records;
  m_taker.OnRecord(*m_source, record);
}

std::string_view OtlpProcess::Kept(std::string& text) {
  ReplaceNuls(text, m_counts);
  const std::string_view kept = CutUtf8(text, kLongestText);
  if (kept.size() < text.size()) ++m_counts.cutTexts;
  return kept;
}
