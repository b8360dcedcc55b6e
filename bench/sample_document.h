// A trace file that is loaded for a benchmark.
#pragma once

#include <cstdlib>
#include <string>

#include "bench/bench_host.h"
#include "bench/sample_file.h"
#include "documents/trace_file_doc.h"

inline void LoadInto(BenchHost& host, CTraceFileDoc& document, const std::string& path) {
  if (!document.OnOpenDocument(path)) std::exit(2);
  host.RunUntil([&] { return !document.m_loading; });
}

// The sample file of a program, open until the end.
struct SampleDocument {
  explicit SampleDocument(const char* program) : path(SampleFile(program)) {
    LoadInto(host, document, path);
  }

  const std::string path;
  BenchHost host;
  CTraceFileDoc document{host};
};
