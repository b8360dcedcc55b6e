// The traces of a file as logs and spans.
//
// Shape    A file does not say which source a trace is of: machine, application and process do.
//          Serials are places in the file, so the same trace has the same ids with every filter.
//          Behind a report of losses nothing is known of what was open: these blocks end there.
// Threads  One.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "quor/otlp/out/out_sources.h"

class OutFile {
 public:
  // `mark`: tells files apart in which a process has the same number.
  explicit OutFile(std::uint64_t mark) : m_mark(mark) {}

  // In the order of the file. Its serial is its place, from 1; of a report it means nothing.
  void Take(OutTrace trace, bool isReport, OutSink& sink);
  void End(OutSink& sink);

 private:
  struct Source {
    std::string machine, app;
    std::unique_ptr<OutSource> out;
  };
  Source& SourceOf(const OutTrace& trace);
  void Interrupt(const OutTrace& report, OutSink& sink);

  const std::uint64_t m_mark;
  OpenTotals m_totals;
  std::map<std::string, Source> m_sources;
};
