#include "records/walkers/trc_walkers.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <vector>

#include "records/walkers/trc_meeting.h"

namespace {

constexpr std::uint64_t kChunkMin = std::uint64_t{1} << 20, kChunkMax = std::uint64_t{64} << 20;
constexpr std::uint64_t kChunksPerWalker = 8;  // so that all of them end at about the same time

}  // namespace

TrcWalkers TrcWalkers::For(std::uint64_t fileBytes) {
  const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1u, kMost);
  if (processors == 1 || fileBytes < 2 * kChunkMin) return {};
  const std::uint64_t even = fileBytes / (processors * kChunksPerWalker) + 1;
  return {processors, std::clamp(even, kChunkMin, kChunkMax)};
}

std::uint64_t WalkTrcTogether(Bytes file, const TrcWalkers& walkers, TrcParts& parts) {
  TrcMeeting meeting(file, walkers, parts);
  std::vector<std::thread> others;
  try {
    for (unsigned i = 1; i < walkers.count; ++i)
      others.emplace_back([&meeting] { meeting.Work(); });
  } catch (const std::exception&) {
    // Those that there are do the work.
  }
  meeting.Work();
  for (std::thread& other : others) other.join();
  return meeting.Reached();
}
