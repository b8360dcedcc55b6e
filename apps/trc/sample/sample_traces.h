// A stream of traces like that of a small shop's machines: for trying things out, for tests and for
// benchmarks.
//
// Shape    Several machines, applications, processes and threads whose clocks and numbers move
//          forward; "Begin: text" and "End: text" traces nest per thread, and every block ends
//          before the stream does. The same seed gives the same traces.
// Owner    The caller releases each trace. The names are the stream's own.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/trace_event.h"
#include "sample/sample_vocabulary.h"

class SampleTraces {
 public:
  SampleTraces(std::uint64_t traces, std::uint64_t seed);

  // Null after the last trace.
  TraceEvent_i* Next();
  // The names of all traces so far, and of the threads.
  NameMap& Names() { return m_names; }

 private:
  struct Block {
    const SamplePoint* point;
    std::string text;
  };
  struct Thread {
    const SampleApp* app;
    NameId machine, application, process, thread;
    std::uint64_t clockStartPs;  // the zero of the machine's tic count
    std::vector<Block> blocks;   // open ones, innermost last
  };
  // The ids of a trace point's names.
  struct PointIds {
    NameId component, category, file;
  };

  void MakeThreads();
  NameId IdOf(const std::string& name);
  const PointIds& IdsOf(const SamplePoint& point);
  Thread& PickThread();
  const SamplePoint& Step(Thread& thread);
  void WriteStack(const Thread& thread, const SamplePoint& point);
  void MoveClock();
  TraceEvent_i* Make(const Thread& thread, const SamplePoint& point);

  SampleRandom m_random;
  std::uint64_t m_left;
  std::uint64_t m_openBlocks = 0;
  std::uint32_t m_count = 0;
  std::uint64_t m_elapsedPs = 0;
  NameMap m_names;
  std::unordered_map<std::string, NameId> m_ids;
  std::unordered_map<const SamplePoint*, PointIds> m_pointIds;
  std::vector<Thread> m_threads;
  std::size_t m_current = 0;
  std::string m_text, m_stack;  // of the current trace; members, to keep their storage
};
