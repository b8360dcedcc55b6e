#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/json_text.h"
#include "commands/stats.h"
#include "statistics/stat_texts.h"
#include "terminal/output.h"
#include "text/text_line.h"

namespace {

WhereStamp StampOfMs(std::int64_t ms) {
  return StampFrom(MomentOfMs(ms));
}

// In the order of the columns: what needs attention first.
struct SliceNumber {
  const char* heading;
  const char* key;
  std::uint64_t (*of)(const SliceCounts& slice);
};
constexpr SliceNumber kSliceNumbers[] = {
    {"Traces", "traces", [](const SliceCounts& slice) { return slice.Traces(); }},
    {"Error", "error", [](const SliceCounts& slice) { return std::uint64_t{slice.severities[2]}; }},
    {"Warn", "warn", [](const SliceCounts& slice) { return std::uint64_t{slice.severities[1]}; }},
    {"Info", "info", [](const SliceCounts& slice) { return std::uint64_t{slice.severities[0]}; }},
    {"(none)", "none", [](const SliceCounts& slice) { return std::uint64_t{slice.severities[3]}; }},
    {"Losses", "losses", [](const SliceCounts& slice) { return std::uint64_t{slice.losses}; }},
};
constexpr std::size_t kSpanColumns = 2, kSliceColumns = kSpanColumns + std::size(kSliceNumbers);
using SliceCells = std::array<std::string, kSliceColumns>;

// Calls each(from, to, counts) for each slice, in milliseconds; false: it has ended the walk.
template <class Each>
bool ForEachSlice(const TimeSlices& slices, const Each& each) {
  for (std::size_t i = 0; i < slices.Size(); ++i) {
    const std::int64_t from = slices.From() + static_cast<std::int64_t>(i) * slices.Width();
    if (!each(from, from + slices.Width(), slices[i])) return false;
  }
  return true;
}

bool WriteSlice(const SliceCells& cells, const std::array<std::size_t, kSliceColumns>& widths,
                LineWriter& line) {
  for (std::size_t i = 0; i < kSliceColumns; ++i)
    line.Add(cells[i], cells[i].size(), widths[i], i >= kSpanColumns);
  return line.End();
}

bool HasOthers(const TimeSlices& slices) {
  return slices.Before() + slices.Behind() + slices.WithoutTime() > 0;
}

}  // namespace

bool WriteSlicesAsText(const TimeSlices& slices, const StatsOptions& options, Output& output) {
  const bool utc = options.traces.utc;
  std::vector<SliceCells> lines = {{"From", "To"}};
  for (std::size_t i = 0; i < std::size(kSliceNumbers); ++i)
    lines.front()[kSpanColumns + i] = kSliceNumbers[i].heading;
  ForEachSlice(slices, [&](std::int64_t from, std::int64_t to, const SliceCounts& slice) {
    SliceCells cells = {StampText(StampOfMs(from), utc), StampText(StampOfMs(to), utc)};
    for (std::size_t i = 0; i < std::size(kSliceNumbers); ++i)
      cells[kSpanColumns + i] = std::to_string(kSliceNumbers[i].of(slice));
    lines.push_back(std::move(cells));
    return true;
  });
  std::array<std::size_t, kSliceColumns> widths = {};
  for (const SliceCells& cells : lines)
    for (std::size_t i = 0; i < kSliceColumns; ++i)
      widths[i] = std::max(widths[i], cells[i].size());
  LineWriter line(output);
  for (const SliceCells& cells : lines)
    if (!WriteSlice(cells, widths, line)) return false;
  if (!HasOthers(slices)) return true;
  return line.Line(fmt::format("and {} long before, {} long behind, {} without a time",
                               slices.Before(), slices.Behind(), slices.WithoutTime()));
}

bool WriteSlicesAsJson(const TimeSlices& slices, const StatsOptions& options, Output& output) {
  TraceMoments moments(options.traces.utc);
  const auto write = [&](std::int64_t from, std::int64_t to, const SliceCounts& slice) {
    std::string& json = output.Buffer();
    json.append("{\"from\":");
    AppendJsonTime(json, StampOfMs(from), moments);
    json.append(",\"to\":");
    AppendJsonTime(json, StampOfMs(to), moments);
    for (const SliceNumber& number : kSliceNumbers)
      json.append(fmt::format(",\"{}\":{}", number.key, number.of(slice)));
    json.push_back('}');
    return output.EndLine();
  };
  if (!ForEachSlice(slices, write)) return false;
  if (!HasOthers(slices)) return true;
  output.Buffer().append(fmt::format("{{\"before\":{},\"behind\":{},\"withoutTime\":{}}}",
                                     slices.Before(), slices.Behind(), slices.WithoutTime()));
  return output.EndLine();
}
