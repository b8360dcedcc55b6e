#include "listview/copy/copy_work.h"

#include "settings/globals.h"

namespace {

constexpr std::size_t kLearnedPerPart = 16'384;
constexpr int kTracesPerPart = 256;

}  // namespace

CopyWork::CopyWork(const CTraceDoc& document, CopiedTraces& traces, CopyForm form, bool headings,
                   std::size_t bytesMax)
    : m_list(document.m_traces),
      m_stand(document.m_traces),
      m_traces(traces),
      m_moments(g_useUtc),
      m_writer(MakeCopyWriter(form, {traces, document.m_names, m_moments, g_useUtc, headings})),
      m_bytesMax(bytesMax) {}

bool CopyWork::DoPart() {
  // The traces may have been released meanwhile.
  if (!m_stand.Holds()) return End(Result::TracesGone);
  switch (m_phase) {
    case Phase::Learn:
      if (m_writer->NeedsMoments() && Learn()) return false;
      m_phase = Phase::Measure;
      m_traces.Rewind();
      return false;
    case Phase::Measure:
      if (m_writer->NeedsMeasure() && Measure()) return false;
      m_phase = Phase::Write;
      m_traces.Rewind();
      m_writer->Begin(m_text);
      return false;
    case Phase::Write:
      break;
  }
  return Write();
}

// True: more is left.
bool CopyWork::Learn() {
  const std::size_t end = std::min(m_learned + kLearnedPerPart, m_list.size());
  m_list.ForEachIn(m_learned, end,
                   [this](const TraceEvent_i* trace) { m_moments.Learn(m_learned++, *trace); });
  return m_learned < m_list.size();
}

bool CopyWork::Measure() {
  CopiedTrace trace;
  for (int i = 0; i < kTracesPerPart; ++i) {
    if (!m_traces.Next(trace)) return false;
    m_writer->Measure(trace);
  }
  return true;
}

bool CopyWork::Write() {
  CopiedTrace trace;
  for (int i = 0; i < kTracesPerPart; ++i) {
    if (!m_traces.Next(trace)) {
      m_writer->End(m_text);
      return End(m_writer->IsTooLong() ? Result::NoSuchFilter : Result::Whole);
    }
    m_writer->Add(m_text, trace, m_writer->NeedsMoments() ? PlaceOf(*trace.event) : 0);
    if (m_writer->IsTooLong()) return End(Result::NoSuchFilter);
    if (m_text.size() > m_bytesMax) return End(Result::TooManyBytes);
  }
  return false;
}

bool CopyWork::End(Result result) {
  m_result = result;
  if (result != Result::Whole) std::string().swap(m_text);
  return true;
}

// The traces of a list, and those of one thread in a tree, have the order of the document.
std::uint64_t CopyWork::PlaceOf(const TraceEvent_i& trace) {
  for (std::size_t left = m_list.size(); left > 0; --left) {
    if (m_place >= m_list.size()) m_place = 0;
    if (m_list[m_place++] == &trace) return m_place - 1;
  }
  return 0;
}

std::optional<int> CopyWork::Progress() const {
  const int learned = Thousandths(m_learned, m_list.size());
  switch (m_phase) {
    case Phase::Learn:
      return learned / 4;
    case Phase::Measure:
      return m_traces.Progress() / 2;
    case Phase::Write:
      break;
  }
  if (m_writer->NeedsMeasure()) return 500 + m_traces.Progress() / 2;
  return m_writer->NeedsMoments() ? 250 + m_traces.Progress() * 3 / 4 : m_traces.Progress();
}
