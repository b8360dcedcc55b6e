// trc capture: writes live traces to a file, like a monitor's capture.
#include "live/capture_file.h"
#include "live/live_source.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/progress_line.h"

namespace {

// Gives the exit status. `given`: what was chosen for the file.
int Summary(const CaptureOptions& options, std::uint64_t taken, std::uint64_t given,
            const TraceThread_i::Counts& counts, bool good) {
  // Traces that arrived and are in no file are lost as well.
  const std::uint64_t lost = counts.lost + (given - taken);
  std::string summary = std::to_string(taken) + " taken, ";
  if (!options.limits.atSource.empty())
    summary += std::to_string(counts.delivered) + " delivered, " + std::to_string(counts.withheld) +
               " withheld, ";
  Output output;
  const std::string repeated = RepeatedText(counts);
  output.Line(summary + std::to_string(lost) + " lost" + (repeated.empty() ? "" : ", " + repeated));
  const int status = output.Finish();
  if (!good || status == kExitBad) return kExitBad;
  return lost > 0 ? kExitNo : kExitGood;
}

}  // namespace

int RunCapture(const CaptureOptions& options) {
  LiveSource source;
  if (!source.Connect(options.machine, options.limits)) return kExitBad;
  CaptureFile file(options);
  ProgressLine progress;
  std::string why;
  std::uint64_t given = 0;
  bool good = file.Begin(source.Names(), &why);
  if (good) {
    source.Run(
        options.limits,
        [&](const TakenTrace& taken) {
          good = file.Write(*taken.trace, source.Names(), &why);
          if (taken.trace->GetSequenceNumber() != kNoSequenceNumber) ++given;
          taken.trace->Release();
          return good;
        },
        [&] {
          good = file.Flush(&why);
          progress.Show("Capturing... " + std::to_string(file.Traces()) + " traces");
          return good;
        });
    good = good && file.Finish(&why);
  }
  progress.Clear();
  if (!good) {
    PrintError(why);
    file.Salvage();
  }
  return Summary(options, file.Traces(), given, source.Counts(), good);
}
