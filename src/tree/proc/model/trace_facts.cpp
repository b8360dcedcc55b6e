#include "tree/proc/model/trace_facts.h"

#include <string_view>

namespace {

constexpr std::string_view kBegin = "Begin: ", kEnd = "End: ";

BlockMark MarkOf(std::string_view text) {
  if (text.starts_with(kBegin)) return BlockMark::Begin;
  return text.starts_with(kEnd) ? BlockMark::End : BlockMark::None;
}

// The marks contain no NUL, so the bytes are compared without looking for the text's end.
std::string_view FirstBytes(const RawTrace& trace) {
  return {trace.Text().data(), trace.TextLength()};
}

}  // namespace

TraceFacts::TraceFacts(const TraceEvent_i& event) {
  if (const std::uint8_t* const record = event.Record()) {
    const RawTrace trace(record);
    machine = trace.MachineId();
    application = trace.AppId();
    process = trace.PidId();
    thread = trace.TidId();
    sequenceNumber = trace.SequenceNumber();
    tic = trace.TicCount();
    mark = MarkOf(FirstBytes(trace));
    return;
  }
  machine = event.GetMachineId();
  application = event.GetAppId();
  process = event.GetPidId();
  thread = event.GetTidId();
  sequenceNumber = event.GetSequenceNumber();
  tic = event.GetTicCount();
  mark = MarkOf(event.GetText());
}
