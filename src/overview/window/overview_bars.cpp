#include "overview/window/overview_bars.h"

#include <algorithm>
#include <array>

#include "overview/slice_width.h"
#include "overview/window/overview_texts.h"
#include "records/zone_offset.h"

namespace {

constexpr std::array<std::int64_t, 26> kSteps = {1,
                                                 2,
                                                 5,
                                                 10,
                                                 20,
                                                 50,
                                                 100,
                                                 200,
                                                 500,
                                                 Milliseconds::kSecond,
                                                 2 * Milliseconds::kSecond,
                                                 5 * Milliseconds::kSecond,
                                                 10 * Milliseconds::kSecond,
                                                 30 * Milliseconds::kSecond,
                                                 Milliseconds::kMinute,
                                                 2 * Milliseconds::kMinute,
                                                 5 * Milliseconds::kMinute,
                                                 10 * Milliseconds::kMinute,
                                                 30 * Milliseconds::kMinute,
                                                 Milliseconds::kHour,
                                                 2 * Milliseconds::kHour,
                                                 6 * Milliseconds::kHour,
                                                 12 * Milliseconds::kHour,
                                                 Milliseconds::kDay,
                                                 10 * Milliseconds::kDay,
                                                 100 * Milliseconds::kDay};

// Slices in a bar.
std::int64_t BarWidth(const TimeSlices& slices, const OverviewScale& scale, int leastPx) {
  const std::int64_t pxTimes = std::max(scale.widthPx, 1) * slices.Width();
  const std::int64_t least = std::max(leastPx, 1) * (scale.to - scale.from);
  return std::max<std::int64_t>((least + pxTimes - 1) / pxTimes, 1) * slices.Width();
}

TimeLimits BarAt(std::int64_t time, std::int64_t width, const TimeLimits& limits) {
  const std::int64_t from = FloorDivided(time, width) * width;
  return {std::max(from, limits.from), std::min(from + width, limits.to)};
}

std::int64_t ZoneOf(std::int64_t time, bool utc) {
  return utc ? 0
             : ZoneOffsetSeconds(FloorDivided(time, Milliseconds::kSecond)) * Milliseconds::kSecond;
}

constexpr int kGapPx = 12;

// `fits` says whether two texts have room beside each other.
void AddNotes(const OverviewEndNotes& notes, std::string& first, std::string& last,
              const std::function<bool(const std::string&, const std::string&)>& fits) {
  const std::string left = notes.first.empty() ? first : first + " (" + notes.first + ")";
  const std::string right = notes.last.empty() ? last : "(" + notes.last + ") " + last;
  if (!fits(left, right)) return;
  first = left;
  last = right;
}

}  // namespace

int OverviewScale::PxOf(std::int64_t time) const {
  const double part = static_cast<double>(time - from) / static_cast<double>(to - from);
  return static_cast<int>(std::clamp(part, -1.0, 2.0) * widthPx + (part < 0 ? -0.5 : 0.5));
}

std::int64_t OverviewScale::TimeAt(int px) const {
  const int inside = std::clamp(px, 0, widthPx);
  return from + (to - from) * inside / std::max(widthPx, 1);
}

std::vector<OverviewBar> BarsOf(const TimeSlices& slices, const OverviewScale& scale, int leastPx) {
  std::vector<OverviewBar> bars;
  const std::int64_t width = BarWidth(slices, scale, leastPx);
  for (std::size_t i = 0; i < slices.Size(); ++i) {
    if (slices[i] == SliceCounts()) continue;
    const std::int64_t from = slices.From() + static_cast<std::int64_t>(i) * slices.Width();
    const TimeLimits time = BarAt(from, width, slices.Limits());
    if (time.to <= scale.from || time.from >= scale.to) continue;
    if (bars.empty() || bars.back().time != time) {
      const int fromPx = std::max(scale.PxOf(time.from), 0);
      bars.push_back(
          {fromPx, std::max(std::min(scale.PxOf(time.to), scale.widthPx), fromPx + 1), time, {}});
    }
    bars.back().counts += slices[i];
  }
  return bars;
}

TimeLimits BarTimeAt(const TimeSlices& slices, const OverviewScale& scale, int leastPx,
                     std::int64_t time) {
  return BarAt(time, BarWidth(slices, scale, leastPx), slices.Limits());
}

std::vector<OverviewLabel> LabelsOf(const OverviewScale& scale, bool utc,
                                    const std::function<int(const std::string&)>& widthPx,
                                    const OverviewEndNotes& notes) {
  const std::int64_t span = scale.to - scale.from;
  // A step whose labels have room, with as much again between them.
  const auto stepFits = [&](std::int64_t step) {
    const int room = 2 * (widthPx(TimeLabel(scale.from, step, utc)) + kGapPx);
    return step * scale.widthPx / std::max(room, 1) >= span;
  };
  const auto fitting = std::find_if(kSteps.begin(), kSteps.end(), stepFits);
  const std::int64_t step = fitting == kSteps.end() ? kSteps.back() : *fitting;
  const std::int64_t exact = std::min(step, Milliseconds::kSecond);
  std::string first = DateTimeLabel(scale.from, exact, utc);
  const bool isOneDay = TimeLabel(scale.from, Milliseconds::kDay, utc) ==
                        TimeLabel(scale.to, Milliseconds::kDay, utc);
  std::string last =
      isOneDay ? TimeLabel(scale.to, exact, utc) : DateTimeLabel(scale.to, exact, utc);
  AddNotes(notes, first, last, [&](const std::string& left, const std::string& right) {
    return widthPx(left) + kGapPx + widthPx(right) <= scale.widthPx;
  });
  std::vector<OverviewLabel> labels = {{0, first, true}};
  const int lastPx = scale.widthPx - widthPx(last);
  int freePx = widthPx(labels.front().text) + kGapPx;
  if (lastPx >= freePx) labels.push_back({lastPx, last, true});
  const std::int64_t zone = ZoneOf(scale.from, utc);
  std::int64_t time = FloorDivided(scale.from + zone + step - 1, step) * step - zone;
  for (; time < scale.to; time += step) {
    const std::string text = TimeLabel(time, step, utc);
    const int width = widthPx(text), px = scale.PxOf(time) - width / 2;
    if (px < freePx || px + width + kGapPx > lastPx) continue;
    labels.push_back({px, text, false});
    freePx = px + width + kGapPx;
  }
  return labels;
}
