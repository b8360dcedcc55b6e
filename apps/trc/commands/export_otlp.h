// trc export --format otlp: traces as logs and spans of OpenTelemetry, in JSON lines.
#pragma once

#include "filter/shown_traces.h"
#include "quor/otlp/out/out_file.h"
#include "quor/otlp/out/out_requests.h"
#include "terminal/terminal_host.h"

class OtlpExporter {
 public:
  OtlpExporter(ShownTraces& traces, const TraceOptions& options, ProgressLine& progress)
      : m_traces(traces), m_options(options), m_progress(progress) {}

  // `Sink` has Buffer and EndLine; stops when it takes no more, and after an interrupt.
  template <class Sink>
  void Run(Sink& sink) {
    bool goesOn = true;
    OutRequests requests([&](const OutRequest& request) {
      if (!goesOn) return;
      AppendLine(sink.Buffer(), request);
      goesOn = sink.EndLine();
    });
    OutFile file(Mark());
    m_traces.OnLook([this](std::size_t place) { return LookAt(place); });
    for (std::size_t row = m_traces.Limit(m_options); goesOn && m_traces.Has(row); ++row) {
      Take(row, file, requests);
      goesOn = goesOn && Look(row);
    }
    m_traces.OnLook({});
    file.End(requests);
    requests.Flush();
    m_progress.Clear();
  }

 private:
  static void AppendLine(std::string& line, const OutRequest& request);
  std::uint64_t Mark() const;
  void Take(std::size_t row, OutFile& file, OutRequests& requests);
  bool LookAt(std::size_t place);
  bool Look(std::size_t row);

  ShownTraces& m_traces;
  const TraceOptions& m_options;
  ProgressLine& m_progress;
};
