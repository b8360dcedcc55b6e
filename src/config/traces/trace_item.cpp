#include "config/traces/trace_item.h"

#include <algorithm>

#include "quor/client/trace_config.h"

bool CompareItems(int sortKey, const CTraceItem& a, const CTraceItem& b) {
  switch (sortKey) {
    case -1:
      return a.m_component < b.m_component;
    case 1:
      return a.m_component > b.m_component;
    case -2:
      return a.m_category < b.m_category;
    case 2:
      return a.m_category > b.m_category;
    case -3:
      return a.m_settings < b.m_settings;
    case 3:
      return a.m_settings > b.m_settings;
    default:
      return false;
  }
}

void SortItems(TraceItems& items, int sortKey) {
  std::stable_sort(items.begin(), items.end(),
                   [sortKey](const QuorPtr<CTraceItem>& a, const QuorPtr<CTraceItem>& b) {
                     return CompareItems(sortKey, *a, *b);
                   });
}

std::vector<ReportMark> SettingsMarks(unsigned settings) {
  using Tone = ReportMark::Tone;
  constexpr struct {
    unsigned bit;
    Tone tone;
  } kMarks[] = {{TRC_SET_INFO, Tone::Info},     {TRC_SET_WARN, Tone::Warn},
                {TRC_SET_ERROR, Tone::Error},   {TRC_SET_DEVELOPER, Tone::Plain},
                {TRC_SET_VERBOSE, Tone::Plain}, {TRC_SET_LOCATION, Tone::Plain},
                {TRC_SET_STACK, Tone::Plain}};
  std::vector<ReportMark> marks;
  for (const auto& [bit, tone] : kMarks) marks.push_back({tone, (settings & bit) != 0});
  return marks;
}

std::vector<int> TraceColumnWidths(int roomPx) {
  constexpr int kPercent = 35;
  const int name = roomPx * kPercent / 100;
  return {name, name, roomPx - 2 * name};
}
