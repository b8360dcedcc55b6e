// Random numbers that are the same on every machine for the same seed.
#pragma once

#include <cstdint>

// The step of SplitMix64: a counter through a mixing function.
class SampleRandom {
 public:
  explicit SampleRandom(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t Next() {
    std::uint64_t mixed = (m_state += 0x9E3779B97F4A7C15u);
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
    return mixed ^ (mixed >> 31);
  }
  // 0 to bound - 1. REQUIRES: 0 < bound < 2^32.
  std::uint32_t Below(std::uint64_t bound) {
    return static_cast<std::uint32_t>(((Next() >> 32) * bound) >> 32);
  }

 private:
  std::uint64_t m_state;
};
