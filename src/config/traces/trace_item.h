// The rows of the list of traces: their records, order, presets and looks.
//
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

#include "base/quor_ptr.h"
#include "controls/report/report_list.h"

// Settings that have a button.
constexpr unsigned TRC_PRESET_OFF = 0, TRC_PRESET_SUPPORT = 7, TRC_PRESET_DEVELOPER = 15,
                   TRC_PRESET_MAX = 799;

struct CTraceItem : QuorRef::Ref_t {
  CTraceItem(std::string component, std::string category, unsigned traceId, unsigned settings)
      : m_category(std::move(category)),
        m_component(std::move(component)),
        m_traceId(traceId),
        m_settings(settings) {}

  std::string m_category, m_component;
  unsigned m_traceId, m_settings;
};

using TraceItems = std::vector<QuorPtr<CTraceItem>>;

// Sort keys: 1 by component, 2 by category, 3 by settings, each descending; negative: ascending.
// Does a go before b?
bool CompareItems(int sortKey, const CTraceItem& a, const CTraceItem& b);
// Items that are equal keep their order.
void SortItems(TraceItems& items, int sortKey);

// A mark for each kind of trace and addition, in the order of their bits.
std::vector<ReportMark> SettingsMarks(unsigned settings);
// Two columns of 35 % each, and the rest.
std::vector<int> TraceColumnWidths(int roomPx);
