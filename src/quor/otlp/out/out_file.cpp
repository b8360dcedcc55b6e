#include "quor/otlp/out/out_file.h"

#include "quor/otlp/out/out_ids.h"

OutFile::Source& OutFile::SourceOf(const OutTrace& trace) {
  // A source is named by machine, application and process, which have no NUL in them.
  std::string key(trace.machine);
  key.append(1, '\0').append(trace.app).append(1, '\0').append(trace.process);
  Source& source = m_sources[key];
  if (!source.out) {
    source.machine = trace.machine;
    source.app = trace.app;
    source.out = std::make_unique<OutSource>(
        OutInstanceOf(trace.machine, trace.app, trace.process, m_mark), m_totals);
  }
  return source;
}

void OutFile::Interrupt(const OutTrace& report, OutSink& sink) {
  bool isKnown = false;
  for (const auto& [key, source] : m_sources)
    isKnown |= source.machine == report.machine && source.app == report.app;
  for (const auto& [key, source] : m_sources)
    if (!isKnown || (source.machine == report.machine && source.app == report.app))
      source.out->Interrupt(sink);
}

void OutFile::Take(OutTrace trace, bool isReport, OutSink& sink) {
  if (!isReport) return SourceOf(trace).out->Take(trace, sink);
  std::uint64_t lost = 0;
  if (IsLossReport(trace, lost) && lost > 0) Interrupt(trace, sink);
  trace.serial = 0;
  SourceOf(trace).out->Report(trace, lost, sink);
}

void OutFile::End(OutSink& sink) {
  for (const auto& [key, source] : m_sources) source.out->Interrupt(sink);
  m_sources.clear();
}
