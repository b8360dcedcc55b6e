// The damage that a walk over a .trc file met.
//
// Shape    Positions count from the file's beginning, in bytes.
// Threads  Plain data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

struct TrcDamage {
  std::uint64_t skippedBytes = 0;               // where no record begins
  std::uint64_t skippedPlaces = 0;              // runs of such bytes
  std::optional<std::uint64_t> firstSkippedAt;  // the first of them
  std::optional<std::uint64_t> cutAt;  // where the last record begins, if the file's end cuts it

  bool Any() const { return skippedBytes > 0 || cutAt; }
  // REQUIRES: positions come in rising order.
  void Skip(std::uint64_t position) {
    if (skippedBytes++ == 0) firstSkippedAt = position;
    if (position != std::exchange(behindSkipped, position + 1)) ++skippedPlaces;
  }
  // What a walk met that began where this one ended.
  void Append(const TrcDamage& later) {
    if (later.skippedBytes > 0) {
      const bool goesOn = skippedBytes > 0 && later.firstSkippedAt == behindSkipped;
      skippedPlaces += later.skippedPlaces - (goesOn ? 1 : 0);
      if (skippedBytes == 0) firstSkippedAt = later.firstSkippedAt;
      skippedBytes += later.skippedBytes;
      behindSkipped = later.behindSkipped;
    }
    if (later.cutAt) cutAt = later.cutAt;
  }

  std::uint64_t behindSkipped = 0;  // of the last run
};

// "406 bytes skipped, last record cut"; empty for a whole file. `places` adds where: "406 bytes
// skipped in 3 places from byte 1,234 on, last record cut at byte 9,000".
std::string DamageText(const TrcDamage& damage, bool places = false);
