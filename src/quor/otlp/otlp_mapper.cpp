#include "quor/otlp/otlp_mapper.h"

#include "base/text.h"
#include "quor/otlp/otlp_process.h"
#include "quor/otlp/otlp_resource.h"
#include "records/record_layout.h"

OtlpMapper::OtlpMapper(OtlpTaker& taker, OtlpRules rules) : m_taker(taker), m_rules(rules) {}
OtlpMapper::~OtlpMapper() = default;

void OtlpMapper::Take(const quor::otlp::ExportLogs& logs, const OtlpArrival& arrival) {
  for (const auto& resource : logs.resource_logs()) {
    OtlpProcess& process = ProcessOf(resource.resource(), arrival);
    for (const auto& scope : resource.scope_logs())
      for (const auto& log : scope.log_records()) process.Take(scope.scope(), log, arrival);
  }
}

void OtlpMapper::Take(const quor::otlp::ExportSpans& spans, const OtlpArrival& arrival) {
  for (const auto& resource : spans.resource_spans()) {
    OtlpProcess& process = ProcessOf(resource.resource(), arrival);
    for (const auto& scope : resource.scope_spans()) {
      for (const auto& span : scope.spans()) {
        const std::size_t before = process.Held().Bytes();
        process.Hold(scope.scope(), span, arrival);
        m_heldBytes += process.Held().Bytes() - before;
        if (process.Held().Bytes() > m_rules.heldBytes) GiveAll(process);
        while (m_heldBytes > m_rules.heldBytesAll) GiveAll(*Largest());
      }
    }
  }
  // At the end of all: spans that belong together come in one message, in any order.
  for (auto used = m_byUse.rbegin(); used != m_byUse.rend(); ++used) {
    if ((*used)->lastUse != arrival.now) break;
    GiveReady(**used, arrival.now);
  }
}

void OtlpMapper::Tick(std::chrono::nanoseconds now) {
  for (auto& [source, process] : m_processes) GiveReady(*process, now);
  while (!m_byUse.empty() && now - m_byUse.front()->lastUse >= m_rules.forgetAfter) EndOldest();
}

void OtlpMapper::Flush() {
  for (auto& [source, process] : m_processes) GiveAll(*process);
}

std::size_t OtlpMapper::HeldSpans() const {
  std::size_t spans = 0;
  for (const auto& [source, process] : m_processes) spans += process->Held().Spans();
  return spans;
}

OtlpProcess& OtlpMapper::ProcessOf(const quor::otlp::Resource& resource,
                                   const OtlpArrival& arrival) {
  OtlpResource read = ReadResource(resource, arrival.peer);
  if (read.hasPid && !read.instance.empty()) SetInstance(read.source, read.instance);
  for (std::string* name : {&read.source.machine, &read.source.application, &read.source.process}) {
    ReplaceNuls(*name, m_counts);
    if (name->size() <= kLongestText) continue;
    ++m_counts.cutNames;
    *name = std::string(CutUtf8(*name, kLongestText));
  }
  const auto [known, isNew] = m_processes.try_emplace(read.source);
  if (isNew) {
    known->second = std::make_unique<OtlpProcess>(read.instance, m_taker, m_counts);
    known->second->SetSource(known->first);
    known->second->place = m_byUse.insert(m_byUse.end(), known->second.get());
  }
  OtlpProcess& process = *known->second;
  process.lastUse = arrival.now;
  m_byUse.splice(m_byUse.end(), m_byUse, process.place);
  if (m_processes.size() > kProcessesMax) EndOldest();
  process.SayResource(read.others);
  return process;
}

// Containers have the process number 1 each: a second instance has its own name behind it.
void OtlpMapper::SetInstance(OtlpSource& source, const std::string& instance) const {
  OtlpSource own = source;
  own.process += "." + instance;
  const auto other = m_processes.find(source);
  const bool isOther = other != m_processes.end() && other->second->Instance() != instance;
  if (isOther || m_processes.contains(own)) source = own;
}

OtlpProcess* OtlpMapper::Largest() {
  OtlpProcess* largest = nullptr;
  for (auto& [source, process] : m_processes)
    if (!largest || process->Held().Bytes() > largest->Held().Bytes()) largest = process.get();
  return largest;
}

void OtlpMapper::GiveReady(OtlpProcess& process, std::chrono::nanoseconds now) {
  m_heldBytes -= process.Held().Bytes();
  process.GiveReady(now, m_rules);
  m_heldBytes += process.Held().Bytes();
}

void OtlpMapper::GiveAll(OtlpProcess& process) {
  m_heldBytes -= process.Held().Bytes();
  process.GiveAll();
}

void OtlpMapper::EndOldest() {
  OtlpProcess& process = *m_byUse.front();
  GiveAll(process);
  m_byUse.pop_front();
  m_taker.OnEnd(process.Source());
  m_processes.erase(OtlpSource(process.Source()));
}
