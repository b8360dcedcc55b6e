// Testing every trace of a file against a filter, compared with a loop that only reads the ids.
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "listview/rows/row_store.h"
#include "tree/filter/filter_pass.h"

namespace {

std::uint64_t ReadIds(const TraceList_t& traces) {
  std::uint64_t sum = 0;
  traces.ForEach(0, [&](TraceEvent_i* event) {
    const RawTrace trace(event->Record());
    sum += trace.MachineId() + trace.AppId() + trace.ComponentId() + trace.CategoryId() +
           trace.PidId() + trace.TidId() + static_cast<unsigned>(trace.Attributes());
  });
  return sum;
}

std::uint64_t CountMatches(const TraceList_t& traces, CTraceFilter& filter) {
  std::uint64_t passed = 0;
  FilterPass pass(filter);
  traces.ForEach(0, [&](TraceEvent_i* event) { passed += pass.Matches(*event); });
  return passed;
}

void Measure(const char* what, const TraceList_t& traces, CTraceFilter filter) {
  std::uint64_t sink = 0, passed = 0;
  const Measured measured = MeasureBeside(
      7, [&] { sink += ReadIds(traces); }, [&] { passed = CountMatches(traces, filter); });
  const double perRecord = 1e9 / static_cast<double>(traces.size());
  PrintRow(what, measured.seconds * perRecord, "ns/trace", measured.floorSeconds * perRecord,
           measured.ratio, 1.5);
  std::printf("  %llu of %zu pass, check %llu\n", static_cast<unsigned long long>(passed),
              traces.size(), static_cast<unsigned long long>(sink & 0xFF));
}

}  // namespace

int main(int, char** argv) {
  SampleDocument sample(argv[0]);
  CTraceFileDoc& document = sample.document;

  CTraceFilter all;
  all.MergeDocumentNames(document);
  all.allTraces = 0;
  all.allSeverities = all.allComponents = all.allCategories = all.allApplications = 0;
  all.allThreads = all.allAttributes = 0;
  CTraceFilter oneComponent = all;
  if (!oneComponent.components.empty()) oneComponent.components.begin()->second = 0;
  for (auto& [machine, entry] : all.threads) {
    entry.allProcesses = 0;
    for (auto& [process, threads] : entry.processes) threads.allThreadsOfProcess = 0;
  }
  Measure("filter, one component hidden / reading ids", document.m_traces, oneComponent);
  Measure("filter, every mark asked / reading ids", document.m_traces, all);
  return 0;
}
