#include "quor/otlp/out/out_source.h"

#include <algorithm>

#include "quor/otlp/out/out_ids.h"
#include "quor/otlp/out/out_messages.h"
#include "records/raw_trace.h"

namespace {

constexpr std::string_view kBegin = "Begin: ", kEnd = "End: ";

OutOrigin OriginOf(const std::string& instance, const OpenBlock& block) {
  return {instance, block.machine, block.app, block.process};
}

// In the time of the outermost block, so that a block is never outside the one around it.
std::uint64_t InnerTime(const OpenThread& thread, std::uint64_t tic, std::uint64_t time) {
  const OpenBlock& outer = thread.blocks.front();
  if (outer.tic == 0 || tic < outer.tic || !thread.clock.Knows()) return time;
  return static_cast<std::uint64_t>(thread.clock.Moment() +
                                    static_cast<std::int64_t>(tic / kPsPerNs));
}

std::uint64_t EndOf(const OpenThread& thread, std::uint64_t tic, std::uint64_t time) {
  const OpenBlock& block = thread.blocks.back();
  const bool byTics = block.tic != 0 && tic >= block.tic;
  return std::max({block.start, block.innerEnd, byTics ? InnerTime(thread, tic, time) : time});
}

}  // namespace

OutSource::~OutSource() {
  for (const auto& [name, thread] : m_threads) {
    m_totals.blocks -= thread.blocks.size();
    for (const OpenBlock& block : thread.blocks) m_totals.bytes -= block.Size();
  }
}

OutOrigin OutSource::Origin(const OutTrace& trace) const {
  return {m_instance, trace.machine, trace.app, trace.process};
}

void OutSource::Remember(const OutTrace& trace) {
  if (m_process != trace.process) m_process = trace.process;
  if (m_machine != trace.machine) m_machine = trace.machine;
  if (m_app != trace.app) m_app = trace.app;
}

std::uint64_t OutSource::TimeOf(const OutTrace& trace) {
  const auto ms = UnixNanoOf(trace.date, trace.time);
  return ms ? m_clock.TimeOf(*ms, trace.tic) : 0;
}

OpenThread* OutSource::ThreadOf(const OutTrace& trace) {
  if (m_threads.empty()) return nullptr;
  const auto found = m_threads.find(std::string(trace.thread));
  return found == m_threads.end() ? nullptr : &found->second;
}

void OutSource::Take(const OutTrace& trace, OutSink& sink) {
  Remember(trace);
  const std::uint64_t time = TimeOf(trace);
  if (time != 0) m_last = time;
  if (trace.text.starts_with(kBegin) && Begin(trace, time)) return;
  if (trace.text.starts_with(kEnd)) return End(trace, time, sink);
  OpenThread* const inside = ThreadOf(trace);
  if (inside && !inside->blocks.empty() && (trace.attributes & kAttributeError) != 0)
    inside->blocks.back().error = true;
  FillLog(trace, time, inside, sink.NewLog(Origin(trace), trace.component, {1, 0}));
}

// False: there is no room for it.
bool OutSource::Begin(const OutTrace& trace, std::uint64_t time) {
  OpenThread& thread = m_threads[std::string(trace.thread)];
  OpenBlock block;
  block.name = trace.text.substr(kBegin.size());
  block.component = trace.component;
  block.category = trace.category;
  block.file = trace.file;
  block.stack = trace.stack;
  block.machine = trace.machine;
  block.app = trace.app;
  block.process = trace.process;
  if (thread.beyond > 0 || !m_totals.HasRoom(thread, block.Size())) {
    ++thread.beyond;
    ++m_totals.refused;
    return false;
  }
  block.serial = trace.serial;
  block.tic = trace.tic;
  block.line = trace.line;
  block.attributes = trace.attributes;
  block.error = (trace.attributes & kAttributeError) != 0;
  block.spanId = OutSpanId(m_instance, trace.serial);
  if (thread.blocks.empty()) {
    thread.traceId = OutTraceId(m_instance, trace.thread, trace.serial);
    thread.clock = m_clock;
    block.start = time;
  } else {
    block.start = std::max(thread.blocks.back().start, InnerTime(thread, trace.tic, time));
  }
  ++m_totals.blocks;
  m_totals.bytes += block.Size();
  thread.blocks.push_back(std::move(block));
  return true;
}

void OutSource::End(const OutTrace& trace, std::uint64_t time, OutSink& sink) {
  const auto found = m_threads.find(std::string(trace.thread));
  const bool closes = found != m_threads.end() && found->second.beyond == 0;
  if (closes) {
    SendSpan(found->second, found->first, EndOf(found->second, trace.tic, time), &trace, sink);
  } else {
    OpenThread* const inside = found == m_threads.end() ? nullptr : &found->second;
    FillLog(trace, time, inside, sink.NewLog(Origin(trace), trace.component, {1, 0}));
    if (inside) --inside->beyond;
  }
  if (found != m_threads.end() && found->second.blocks.empty() && found->second.beyond == 0)
    m_threads.erase(found);
}

// Of its innermost block, which is closed.
void OutSource::SendSpan(OpenThread& thread, const std::string& name, std::uint64_t end,
                         const OutTrace* last, OutSink& sink) {
  const OpenBlock& block = thread.blocks.back();
  FillSpan(thread, name, end, last,
           sink.NewSpan(OriginOf(m_instance, block), block.component, {last ? 2u : 1u, 0}));
  --m_totals.blocks;
  m_totals.bytes -= block.Size();
  thread.blocks.pop_back();
  if (!thread.blocks.empty())
    thread.blocks.back().innerEnd = std::max(thread.blocks.back().innerEnd, end);
}

void OutSource::Report(const OutTrace& report, std::uint64_t lost, OutSink& sink) {
  const auto ms = UnixNanoOf(report.date, report.time);
  quor::otlp::LogRecord& log = sink.NewLog(Origin(report), report.component, {0, lost});
  // Its tic count is that of the service, not of the source.
  FillLog(report, ms.value_or(m_last), nullptr, log);
  if (lost > 0) AddLost(lost, log);
}

void OutSource::Interrupt(OutSink& sink) {
  std::vector<const std::string*> names;
  for (const auto& [name, thread] : m_threads) names.push_back(&name);
  std::sort(names.begin(), names.end(), [](const auto* a, const auto* b) { return *a < *b; });
  for (const std::string* const name : names) {
    OpenThread& thread = m_threads[*name];
    while (!thread.blocks.empty()) {
      const OpenBlock& block = thread.blocks.back();
      SendSpan(thread, *name, std::max({block.start, block.innerEnd, m_last}), nullptr, sink);
    }
  }
  m_threads.clear();
}
