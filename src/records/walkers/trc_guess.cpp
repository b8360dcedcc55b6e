#include "records/walkers/trc_guess.h"

#include <algorithm>

#include "records/name_record.h"
#include "records/raw_trace.h"

namespace {

// So far a record that is there may be away.
constexpr std::uint64_t kReach = 2 * kTraceBytesMax;
// Records that must follow one another, and the limit of all such steps of one guess.
constexpr int kFollowers = 8;
constexpr int kSteps = 4096;

bool HasMoment(const RawTrace& trace) {
  const UnpackedDate date = UnpackDate(trace.Date());
  const UnpackedTime time = UnpackTime(trace.Time());
  return date.year >= 1970 && date.year < 2200 && date.month >= 1 && date.month <= 12 &&
         date.day >= 1 && date.day <= 31 && time.hour < 24 && time.minute < 60 &&
         time.second < 60 && time.ms < 1000;
}

// The length of what seems to be a record; 0: nothing like one.
std::uint64_t StepAt(const std::uint8_t* at) {
  if (*at == kTagName) return kTagBytes + RawName(at + kTagBytes).Size();
  const RawTrace trace(at + kTagBytes);
  return *at == kTagTrace && HasMoment(trace) ? kTagBytes + trace.Size() : 0;
}

bool IsFollowed(Bytes file, std::uint64_t place, int& steps) {
  for (int records = 0; records < kFollowers; ++records) {
    if (place >= file.size()) return true;
    if (--steps < 0) return false;
    const std::uint64_t step = StepAt(file.data() + place);
    if (step == 0) return false;
    place += step;
  }
  return true;
}

}  // namespace

std::optional<std::uint64_t> GuessTrcRecord(Bytes file, std::uint64_t from, std::uint64_t limit) {
  const std::uint8_t* const begin = file.data();
  const std::uint8_t* const end = begin + std::min(limit, from + kReach);
  int steps = kSteps;
  for (const std::uint8_t* at = begin + from; at < end && steps > 0; ++at) {
    at =
        static_cast<const std::uint8_t*>(memchr(at, kTagTrace, static_cast<std::size_t>(end - at)));
    if (!at) return std::nullopt;
    const auto place = static_cast<std::uint64_t>(at - begin);
    if (HasMoment(RawTrace(at + kTagBytes)) && IsFollowed(file, place, steps)) return place;
  }
  return std::nullopt;
}
