#include "panes/numbered_pane.h"

#include "panes/trace_numbers.h"
#include "panes/trace_pane.h"

std::optional<std::uint64_t> NumberedPane::CurrentNumber() const {
  const auto& pane = static_cast<const TracePane&>(*this);
  const TraceEvent_i* const current = pane.CurrentEvent();
  return current ? TraceNumbers(pane.Document().m_traces).Of(*current) : std::nullopt;
}

std::vector<std::uint64_t> NumberedPane::SelectedNumbers(std::size_t) const {
  const std::optional<std::uint64_t> number = CurrentNumber();
  return number ? std::vector<std::uint64_t>{*number} : std::vector<std::uint64_t>();
}

void NumberedPane::ShowNumber(std::uint64_t number) {
  auto& pane = static_cast<TracePane&>(*this);
  TraceEvent_i* const trace = pane.Document().Notes().TraceAt(number);
  if (!trace) return;
  CTraceHint hint(trace);
  pane.OnUpdate(nullptr, kHintFollow, &hint);
  pane.Follow(trace);
}
