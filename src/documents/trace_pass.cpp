#include "documents/trace_pass.h"

#include <algorithm>
#include <chrono>

namespace {

// Of a part that looks at the clock.
constexpr std::chrono::milliseconds kPartTime(1);
// A rough share of the time of a pass, because the duration of the work after the traces is
// unknown.
constexpr std::uint64_t kThousandthsForTraces = 950;

}  // namespace

TracePass::TracePass(const CTraceDoc& document, std::size_t perLook)
    : m_traces(document.m_traces), m_stand(m_traces), m_perLook(perLook) {}

bool TracePass::DoPart() {
  if (IsVoid()) return true;
  if (m_taken == m_stand.Size()) return Finish();
  const std::size_t end = std::min(m_taken + kTracesPerPart, m_stand.Size());
  const auto late = std::chrono::steady_clock::now() + kPartTime;
  do {
    const std::size_t behind = std::min(m_taken + m_perLook, end);
    Take(m_taken, behind);
    m_taken = behind;
  } while (m_taken < end && std::chrono::steady_clock::now() < late);
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
