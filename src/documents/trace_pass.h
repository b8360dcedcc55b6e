// A walk over all traces of a document as long work, which a view uses to rebuild itself.
//
// The walk becomes void when the document's traces change after its start, whoever changed them. It
// then ends at its next part, and its result must not be used. Its owner starts again.
//
// Owner    Borrows the document.
// Threads  Interface thread.
#pragma once

#include "documents/trace_doc.h"
#include "docview/dialogs/long_work.h"

// Remembers which traces a list holds at a moment.
class TraceStand {
 public:
  explicit TraceStand(const TraceList_t& traces)
      : m_traces(traces),
        m_generation(traces.Generation()),
        m_popped(traces.Popped()),
        m_size(traces.size()) {}

  // Does the list still hold exactly these traces?
  bool Holds() const {
    return m_traces.Generation() == m_generation && m_traces.Popped() == m_popped &&
           m_traces.size() == m_size;
  }
  std::size_t Size() const { return m_size; }

 private:
  const TraceList_t& m_traces;
  const std::uint64_t m_generation, m_popped;
  const std::size_t m_size;
};

class TracePass : public LongWork {
 public:
  bool DoPart() final;
  std::optional<int> Progress() const final;
  // The traces have changed since the beginning.
  bool IsVoid() const { return !m_stand.Holds(); }

 protected:
  // `perLook`: how many traces are taken before the clock is looked at.
  explicit TracePass(const CTraceDoc& document, std::size_t perLook = kTracesPerPart);
  ~TracePass() = default;
  static constexpr std::size_t kTracesPerPart = 4096;
  // For a filter whose text searches the texts of traces: one search may take milliseconds.
  static constexpr std::size_t kTracesPerSearch = 16;
  // The traces at positions [from, end), each once and in order.
  virtual void Take(std::size_t from, std::size_t end) = 0;
  // A part of the work after all traces are taken; true when no work is left.
  virtual bool Finish() { return true; }

  const TraceList_t& Traces() const { return m_traces; }

 private:
  const TraceList_t& m_traces;
  const TraceStand m_stand;
  const std::size_t m_perLook;
  std::size_t m_taken = 0;
};

// How a pass has ended.
enum class PassResult { Whole, Void, Cancelled };
// Runs the pass as long work over the document.
PassResult RunTracePass(CTraceDoc& document, const char* message, TracePass& pass);
