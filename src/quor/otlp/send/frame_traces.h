// The traces of a frame that was taken, by their texts.
//
// Owner    Borrows the frame, for as long as it lives.
// Errors   None: a name that the frame lacks is empty.
// Threads  One.
#pragma once

#include <span>
#include <vector>

#include "quor/client/taker/taken_reader.h"
#include "quor/otlp/out/out_trace.h"

class FrameTraces final : private DataSink {
 public:
  explicit FrameTraces(const TakenFrame& frame);
  // Their serials are set by who takes them. Reports have that of a report.
  std::span<OutTrace> All() { return m_traces; }

 private:
  void OnName(HubNameId, std::string_view) override {}  // the frame's names have them all
  void OnTrace(const std::uint8_t* record, std::size_t bytes) override;
  std::string_view TextOf(HubNameId id) const;

  const TakenNames* const m_names;
  std::vector<OutTrace> m_traces;
};
