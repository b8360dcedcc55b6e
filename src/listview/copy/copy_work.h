// Makes the text of a copy, as long work.
//
// Shape    The text is at most `bytesMax` long: a clipboard passes it on as a whole, and programs
//          that paste it hold it again.
// Owner    Borrows document and traces, which must not change until it is done.
// Errors   Ended: the text is not whole, see Result.
// Threads  Interface thread.
#pragma once

#include <string>

#include "documents/trace_doc.h"
#include "documents/trace_pass.h"
#include "docview/dialogs/long_work.h"
#include "listview/copy/copy_writer.h"

inline constexpr std::size_t kCopyBytesMax = std::size_t{256} << 20;

class CopyWork final : public LongWork {
 public:
  enum class Result {
    Unfinished,
    Whole,
    TooManyBytes,
    NoSuchFilter,  // the filter text would be too long
    TracesGone,
  };

  CopyWork(const CTraceDoc& document, CopiedTraces& traces, CopyForm form, bool headings,
           std::size_t bytesMax = kCopyBytesMax);

  bool DoPart() override;
  std::optional<int> Progress() const override;
  Result GetResult() const { return m_result; }
  const std::string& Text() const { return m_text; }

 private:
  enum class Phase { Learn, Measure, Write };
  bool Learn();
  bool Measure();
  bool Write();
  bool End(Result result);
  std::uint64_t PlaceOf(const TraceEvent_i& trace);

  const TraceList_t& m_list;
  const TraceStand m_stand;
  CopiedTraces& m_traces;
  TraceMoments m_moments;
  const std::unique_ptr<CopyWriter> m_writer;
  const std::size_t m_bytesMax;
  Phase m_phase = Phase::Learn;
  std::size_t m_learned = 0;
  std::size_t m_place = 0;  // where the next trace most likely is
  std::string m_text;
  Result m_result = Result::Unfinished;
};
