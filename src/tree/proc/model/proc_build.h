// Files all traces of a document into an empty model, in parts.
//
// Owner    Borrows document and model. While it lives the model's filter does not change.
// Threads  Interface thread.
#pragma once

#include "documents/trace_pass.h"
#include "tree/proc/model/proc_model.h"

class ProcBuild final : public TracePass {
 public:
  ProcBuild(const CTraceDoc& document, ProcModel& model)
      : TracePass(document, model.Filter().IsSlow() ? kTracesPerSearch : kTracesPerPart),
        m_model(model),
        m_batch(model) {}

 private:
  void Take(std::size_t from, std::size_t end) override {
    Traces().ForEachIn(from, end, [this](TraceEvent_i* event) { m_model.AddTrace(event, false); });
  }
  bool Finish() override { return !m_model.UpdateDurations(m_timed++); }

  ProcModel& m_model;
  const ProcModel::Batch m_batch;
  std::size_t m_timed = 0;  // parts of the durations
};
