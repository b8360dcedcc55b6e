#include "documents/trace_pass.h"

#include <algorithm>

namespace {

constexpr std::size_t kTracesPerPart = 4096;
// A rough share of the time of a pass, because the duration of the work after the traces is
// unknown.
constexpr std::uint64_t kThousandthsForTraces = 950;

}  // namespace

TracePass::TracePass(const CTraceDoc& document) : m_traces(document.m_traces), m_stand(m_traces) {}

bool TracePass::DoPart() {
  if (IsVoid()) return true;
  if (m_taken == m_stand.Size()) return Finish();
  const std::size_t end = std::min(m_taken + kTracesPerPart, m_stand.Size());
  Take(m_taken, end);
  m_taken = end;
  return false;
}

std::optional<int> TracePass::Progress() const {
  if (m_stand.Size() == 0) return 0;
  return static_cast<int>(std::uint64_t{m_taken} * kThousandthsForTraces / m_stand.Size());
}

PassResult RunTracePass(CTraceDoc& document, const char* message, TracePass& pass) {
  if (!RunLongWork(document.GetHost(), &document, {"Tessera", message}, pass))
    return PassResult::Cancelled;
  return pass.IsVoid() ? PassResult::Void : PassResult::Whole;
}
