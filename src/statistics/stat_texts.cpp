#include "statistics/stat_texts.h"

#include <charconv>
#include <memory>

#include "base/text.h"
#include "records/trace_event.h"

namespace {

// Whatever the locale says about points.
std::string FixedText(double number, int digits) {
  char text[400];
  const auto end =
      std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, digits);
  return {text, end.ptr};
}

}  // namespace

std::string ShareText(double share) {
  return FixedText(share * 100, 1) + " %";
}

std::string RateText(const std::optional<double>& rate) {
  return rate ? FixedText(*rate, 2) : std::string();
}

std::string StampText(WhereStamp stamp, bool utc) {
  const std::unique_ptr<TraceEvent_i, void (*)(TraceEvent_i*)> trace(
      TraceEvent_i::Create(0, 0, 0, 0, 0, static_cast<std::uint32_t>(stamp >> 32),
                           static_cast<std::uint32_t>(stamp), 0, 0, 0, 0, 0, 0, {}, {}),
      ReleaseTrace);
  return trace->GetTimeString(!utc);
}

std::string StatText(const StatRow& row, StatColumn column, bool utc) {
  switch (column) {
    case StatColumn::Value:
      return row.value;
    case StatColumn::Count:
      return GroupDigits(row.tally.count);
    case StatColumn::Share:
      return ShareText(row.share);
    case StatColumn::Rate:
      return RateText(row.rate);
    case StatColumn::First:
      return StampText(row.tally.first, utc);
    case StatColumn::Last:
      return StampText(row.tally.last, utc);
  }
  return {};
}
