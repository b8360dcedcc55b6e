#include "quor/otlp/out/out_messages.h"

#include <charconv>
#include <limits>

#include "base/text.h"
#include "records/process_name.h"
#include "records/trace_event.h"

namespace {

using quor::otlp::KeyValue;
using Attributes = google::protobuf::RepeatedPtrField<KeyValue>;

constexpr std::uint32_t kKindInternal = 1, kStatusError = 2;
constexpr std::string_view kUnknownService = "unknown_service";

struct Severity {
  int attributes;
  std::uint32_t number;
  const char* word;
};
// The first one of which all bits are set. The others are exact only with these bits alone.
constexpr Severity kSeverities[] = {{kAttributeError, 17, "ERROR"},
                                    {kAttributeWarn, 13, "WARN"},
                                    {kAttributeInfo | kAttributeVerbose, 1, "TRACE"},
                                    {kAttributeInfo | kAttributeDeveloper, 5, "DEBUG"},
                                    {kAttributeInfo, 9, "INFO"},
                                    {kAttributeVerbose, 1, "TRACE"},
                                    {kAttributeDeveloper, 5, "DEBUG"}};

const Severity* SeverityOf(int attributes) {
  for (const Severity& severity : kSeverities)
    if ((attributes & severity.attributes) == severity.attributes) return &severity;
  return nullptr;
}

quor::otlp::AnyValue* Add(Attributes* to, const char* key) {
  KeyValue* const added = to->Add();
  added->set_key(key);
  return added->mutable_value();
}

void AddText(Attributes* to, const char* key, std::string_view text) {
  if (!text.empty()) SetOutText(Add(to, key)->mutable_string_value(), text);
}

void AddInt(Attributes* to, const char* key, std::uint64_t number) {
  // What has no place in the type is left out rather than sent as a negative number.
  if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    Add(to, key)->set_int_value(static_cast<std::int64_t>(number));
}

// False: it is no number, and nothing is added.
bool AddNumber(Attributes* to, const char* key, std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is = error == std::errc() && end == text.data() + text.size();
  if (is) AddInt(to, key, number);
  return is;
}

void AddThread(Attributes* to, std::string_view thread) {
  if (!AddNumber(to, "thread.id", thread)) AddText(to, "thread.name", thread);
}

void AddSource(Attributes* to, std::string_view file, std::uint32_t line) {
  AddText(to, "code.file.path", file);
  if (!file.empty() || line != 0) AddInt(to, "code.line.number", line);
}

void AddTic(Attributes* to, std::uint64_t tic) {
  if (tic != 0) AddInt(to, "quor.tic_ps", tic);
}

// All words of a trace whose severity does not say everything.
void AddWords(Attributes* to, int attributes, const Severity* severity) {
  if (!severity || severity->attributes != attributes)
    AddText(to, "quor.attributes", AttributesToLabel(attributes));
}

void SetId(std::string* to, std::string_view id) {
  to->assign(id.data(), id.size());
}

// "End: fetch: no route" of the block "fetch" says ": no route".
std::string_view MessageOf(std::string_view end, std::string_view name) {
  if (end.starts_with(name)) end.remove_prefix(name.size());
  const std::size_t begin = end.find_first_not_of(" :");
  return begin == end.npos ? end.substr(end.size()) : end.substr(begin);
}

void AddBegin(const OpenBlock& block, quor::otlp::Span& span) {
  Attributes* const to = span.mutable_attributes();
  AddText(to, "quor.category", block.category);
  AddSource(to, block.file, block.line);
  AddTic(to, block.tic);
  if (block.attributes != kAttributeInfo)
    AddText(to, "quor.attributes", AttributesToLabel(block.attributes));
  AddInt(to, "quor.serial", block.serial);
  AddText(to, "code.stacktrace", block.stack);
}

void AddEnd(const OpenBlock& block, const OutTrace& last, quor::otlp::Span& span) {
  constexpr std::string_view kEnd = "End: ";
  Attributes* const to = span.mutable_attributes();
  AddInt(to, "quor.end_serial", last.serial);
  const std::string_view text = last.text.substr(kEnd.size());
  if (text != block.name) AddText(to, "quor.end", text);
  AddText(to, "exception.stacktrace", last.stack);
  if ((last.attributes & kAttributeError) == 0) return;
  const std::string_view message = MessageOf(text, block.name);
  if (!message.empty()) SetOutText(span.mutable_status()->mutable_message(), message);
}

}  // namespace

void SetOutText(std::string* to, std::string_view text) {
  if (IsUtf8(text))
    to->assign(text.begin(), text.end());
  else
    *to = ReplaceMalformed(text);
}

void FillResource(const OutOrigin& origin, quor::otlp::Resource& resource) {
  Attributes* const to = resource.mutable_attributes();
  AddText(to, "service.name", origin.app.empty() ? kUnknownService : origin.app);
  AddText(to, "host.name", origin.machine);
  const ProcessName process = ProcessName::Of(origin.process);
  if (!AddNumber(to, "process.pid", process.process)) AddText(to, "quor.process", process.process);
  AddText(to, "process.owner", process.account);
  constexpr char kHex[] = "0123456789abcdef";
  std::string instance;
  for (const char byte : origin.instance) {
    instance += kHex[static_cast<unsigned char>(byte) >> 4];
    instance += kHex[static_cast<unsigned char>(byte) & 15];
  }
  AddText(to, "service.instance.id", instance);
}

void FillLog(const OutTrace& trace, std::uint64_t time, const OpenThread* inside,
             quor::otlp::LogRecord& log) {
  log.set_time_unix_nano(time);
  const Severity* const severity = SeverityOf(trace.attributes);
  if (severity) {
    log.set_severity_number(severity->number);
    log.set_severity_text(severity->word);
  }
  SetOutText(log.mutable_body()->mutable_string_value(), trace.text);
  if (!trace.category.empty()) SetOutText(log.mutable_event_name(), trace.category);
  Attributes* const to = log.mutable_attributes();
  AddThread(to, trace.thread);
  AddSource(to, trace.file, trace.line);
  AddTic(to, trace.tic);
  AddWords(to, trace.attributes, severity);
  if (trace.serial != 0) AddInt(to, "quor.serial", trace.serial);
  AddText(to, "exception.stacktrace", trace.stack);
  if (!inside || inside->blocks.empty()) return;
  SetId(log.mutable_trace_id(), inside->traceId);
  SetId(log.mutable_span_id(), inside->blocks.back().spanId);
}

void AddLost(std::uint64_t lost, quor::otlp::LogRecord& log) {
  AddInt(log.mutable_attributes(), "quor.lost", lost);
}

void FillSpan(const OpenThread& thread, std::string_view name, std::uint64_t end,
              const OutTrace* last, quor::otlp::Span& span) {
  const OpenBlock& block = thread.blocks.back();
  SetId(span.mutable_trace_id(), thread.traceId);
  SetId(span.mutable_span_id(), block.spanId);
  if (thread.blocks.size() > 1)
    SetId(span.mutable_parent_span_id(), thread.blocks[thread.blocks.size() - 2].spanId);
  SetOutText(span.mutable_name(), block.name);
  span.set_kind(kKindInternal);
  span.set_start_time_unix_nano(block.start);
  span.set_end_time_unix_nano(end);
  AddThread(span.mutable_attributes(), name);
  AddBegin(block, span);
  if (last)
    AddEnd(block, *last, span);
  else
    Add(span.mutable_attributes(), "quor.unfinished")->set_bool_value(true);
  if (block.error || (last && (last->attributes & kAttributeError) != 0))
    span.mutable_status()->set_code(kStatusError);
}
