#include "import/otlp/otlp_import.h"

#include <algorithm>

#include "base/fail_with.h"
#include "base/text.h"
#include "import/otlp/otlp_frames.h"
#include "import/otlp/otlp_json.h"

namespace {

// A file has no silence: a process of which nothing came for long is the same one still.
constexpr OtlpRules kRules = {.forgetAfter = std::chrono::nanoseconds::max()};

std::uint64_t LatestIn(const quor::otlp::ExportLogs& logs) {
  std::uint64_t latest = 0;
  for (const auto& resource : logs.resource_logs())
    for (const auto& scope : resource.scope_logs())
      for (const auto& log : scope.log_records())
        latest = std::max({latest, log.time_unix_nano(), log.observed_time_unix_nano()});
  return latest;
}

std::uint64_t LatestIn(const quor::otlp::ExportSpans& spans) {
  std::uint64_t latest = 0;
  for (const auto& resource : spans.resource_spans())
    for (const auto& scope : resource.scope_spans())
      for (const auto& span : scope.spans())
        latest = std::max({latest, span.start_time_unix_nano(), span.end_time_unix_nano()});
  return latest;
}

}  // namespace

OtlpImport::OtlpImport(const ImportFields& fields, ImportParts& parts)
    : m_fields(fields), m_parts(parts), m_mapper(*this, kRules) {}

bool OtlpImport::Read(LineReader& reader, const std::string& name, std::string* why) {
  constexpr std::size_t kLookedAt = 4096;
  if (BeginsAsJson(reader.PeekBytes(kLookedAt)))
    ReadJson(reader, name);
  else
    ReadProtobuf(reader, name);
  if (m_hasFailed) return FailWith(why, m_why);
  if (reader.Stopped()) return FailWith(why, "interrupted");
  if (reader.Error() != 0) return FailWith(why, name + ": " + SystemReason(reader.Error()));
  m_mapper.Flush();
  return !m_hasFailed || FailWith(why, m_why);
}

void OtlpImport::ReadJson(LineReader& reader, const std::string& name) {
  JsonPull pull(reader);
  OtlpJson requests(pull);
  quor::otlp::ExportLogs logs;
  quor::otlp::ExportSpans spans;
  while (!m_hasFailed) {
    const OtlpJson::Got got = requests.Next(logs, spans);
    if (got == OtlpJson::Got::End) break;
    if (got == OtlpJson::Got::Bad) {
      if (reader.Stopped() || reader.Error() != 0) return;
      if (m_bad++ == 0) m_firstBad = name + ", " + requests.Why();
      if (!pull.NextLine()) break;
      continue;
    }
    Take(logs);
    Take(spans);
  }
  m_strange += requests.Strange();
  m_others += requests.Metrics();
}

void OtlpImport::ReadProtobuf(LineReader& reader, const std::string& name) {
  OtlpFrames frames(reader);
  quor::otlp::ExportLogs logs;
  quor::otlp::ExportSpans spans;
  while (!m_hasFailed) {
    const OtlpFrames::Got got = frames.Next(logs, spans);
    if (got == OtlpFrames::Got::End) break;
    if (got == OtlpFrames::Got::Bad) {
      if (reader.Stopped() || reader.Error() != 0) return;
      if (m_bad++ == 0) m_firstBad = name + ", " + frames.Why();
      break;
    }
    if (got == OtlpFrames::Got::Logs) Take(logs);
    if (got == OtlpFrames::Got::Spans) Take(spans);
  }
  m_others += frames.Others();
}

template <class Message>
void OtlpImport::Take(const Message& message) {
  // The clock of the mapper has a sign.
  m_arrival.unixNs = std::max(m_arrival.unixNs, LatestIn(message));
  m_arrival.now = std::chrono::nanoseconds(
      static_cast<std::int64_t>(std::min<std::uint64_t>(m_arrival.unixNs, INT64_MAX)));
  m_mapper.Take(message, m_arrival);
  m_mapper.Tick(m_arrival.now);
}

void OtlpImport::OnRecord(const OtlpSource& source, const OtlpRecord& record) {
  if (m_hasFailed) return;
  ImportedTrace trace = m_fields.Begin();
  trace.hasTime = true;
  trace.date = record.date;
  trace.time = record.time;
  trace.tic = record.tic;
  trace.attributes = record.attributes;
  if (!source.machine.empty()) trace[ImportName::Machine] = source.machine;
  if (!source.application.empty()) trace[ImportName::App] = source.application;
  trace[ImportName::Pid] = source.process;
  trace[ImportName::Tid] = record.thread;
  const bool hasComponent = trace[ImportName::Component].data() != nullptr;
  if (!hasComponent) trace[ImportName::Component] = record.component;
  trace[ImportName::Category] = hasComponent ? record.component : record.category;
  if (!record.file.empty()) trace[ImportName::File] = record.file;
  trace.line = record.line;
  trace.text = record.text;
  if (!record.stack.empty()) trace.stack = record.stack;
  m_fields.Complete(trace);
  if (!m_parts.Put(trace, &m_why)) m_hasFailed = true;
}

bool OtlpImport::IsWhole() const {
  const OtlpCounts& counts = m_mapper.Counts();
  return m_bad + m_strange + counts.cutTexts + counts.cutNames == 0;
}

std::vector<std::string> OtlpImport::Texts() const {
  std::vector<std::string> texts;
  const auto tell = [&texts](std::uint64_t number, const char* one, const char* many,
                             const std::string& more = {}) {
    if (number != 0) texts.push_back(GroupDigits(number) + " " + (number == 1 ? one : many) + more);
  };
  const OtlpCounts& counts = m_mapper.Counts();
  tell(m_bad, "request was left out: ", "requests were left out; the first: ", m_firstBad);
  tell(m_strange, "value is of another kind than its field, and was left out",
       "values are of another kind than their fields, and were left out");
  tell(m_others, "part holds neither logs nor spans, and is not carried over",
       "parts hold neither logs nor spans, and are not carried over");
  tell(counts.cutTexts, "text was cut: a trace file holds 65535 bytes of each",
       "texts were cut: a trace file holds 65535 bytes of each");
  tell(counts.cutNames, "name was cut: a trace file holds 65535 bytes of each",
       "names were cut: a trace file holds 65535 bytes of each");
  tell(counts.nulBytes, "NUL byte is shown as \xE2\x90\x80", "NUL bytes are shown as \xE2\x90\x80");
  tell(counts.namesInTexts, "name stands in its text: its process has too many",
       "names stand in their texts: their processes have too many");
  return texts;
}
