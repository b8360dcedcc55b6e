#include "quor/runtime/process/clock.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "records/raw_trace.h"

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace {

#ifdef __SIZEOF_INT128__
__extension__ using Wide = unsigned __int128;
#else
using Wide = std::uint64_t;  // not used: a counter is read on 64-bit processors only
#endif

constexpr std::uint64_t kSecondPs = 1'000'000'000'000;
constexpr std::uint64_t kRateNs = 10'000'000;     // the shortest base for a rate
constexpr std::uint64_t kRateBaseNs = kSecondNs;  // the base moves: the kernel's rate changes

std::uint64_t ReadNs(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * kSecondNs +
         static_cast<std::uint64_t>(time.tv_nsec);
}

std::uint64_t ReadTicks() {
#if defined(__x86_64__)
  return __rdtsc();
#else
  return 0;
#endif
}

// If the kernel uses the counter, it has checked that the counters of all processors agree.
bool KernelUsesCounter() {
#if defined(__x86_64__)
  char name[8] = {};
  const int file = open("/sys/devices/system/clocksource/clocksource0/current_clocksource",
                        O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  const ssize_t length = read(file, name, sizeof name - 1);
  close(file);
  int mode = 0;
  return length == 4 && std::strcmp(name, "tsc\n") == 0 && prctl(PR_GET_TSC, &mode) == 0 &&
         mode == PR_TSC_ENABLE;
#else
  return false;
#endif
}

struct Civil {
  std::uint32_t date, time;  // of the second
};

// Converts days since 1970 to a date of the Gregorian calendar. Years are counted from March, so
// that the leap day is the last day of a year.
Civil CivilOf(std::uint64_t wallNs) {
  const std::uint64_t seconds = wallNs / kSecondNs;
  const auto days = static_cast<std::uint32_t>(seconds / 86400) + 719468;
  const auto rest = static_cast<std::uint32_t>(seconds % 86400);
  const std::uint32_t era = days / 146097;
  const std::uint32_t dayOfEra = days % 146097;
  const std::uint32_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::uint32_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::uint32_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
  const std::uint32_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  const std::uint32_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  return {PackDate(year, month, day), PackTime(rest / 3600, rest / 60 % 60, rest % 60, 0)};
}

Stamp StampOf(std::uint64_t wallNs, std::uint64_t ticPs) {
  const Civil civil = CivilOf(wallNs);
  return {civil.date, civil.time | static_cast<std::uint32_t>(wallNs % kSecondNs / 1'000'000),
          ticPs};
}

std::uint64_t Scale(std::uint64_t ticks, std::uint64_t rate) {
  return static_cast<std::uint64_t>((static_cast<Wide>(ticks) * rate) >> 32);
}

}  // namespace

void TraceClock::Begin() {
  m_usesCounter = KernelUsesCounter();
  m_first = m_recent = Measure();
}

void TraceClock::AfterFork() noexcept {
  const std::uint32_t sequence = m_sequence.load(std::memory_order_relaxed);
  if ((sequence & 1) == 0) return;
  m_lengthTicks.store(0, std::memory_order_relaxed);
  m_first = m_recent = Measure();
  m_sequence.store(sequence + 1, std::memory_order_release);
}

Stamp TraceClock::ByKernel() noexcept {
  const std::uint64_t monotonicNs = ReadNs(CLOCK_MONOTONIC);
  return StampOf(ReadNs(CLOCK_REALTIME), monotonicNs * 1000);
}

Stamp TraceClock::Now() noexcept {
  // Every load is an acquire, so that the second check of the sequence comes last.
  const std::uint32_t sequence = m_sequence.load(std::memory_order_acquire);
  const std::uint64_t startTicks = m_startTicks.load(std::memory_order_acquire);
  const std::uint64_t lengthTicks = m_lengthTicks.load(std::memory_order_acquire);
  const std::uint64_t startPs = m_startPs.load(std::memory_order_acquire);
  const std::uint64_t rate = m_psPerTick.load(std::memory_order_acquire);
  const std::uint64_t secondPs = m_secondPs.load(std::memory_order_acquire);
  const std::uint32_t date = m_date.load(std::memory_order_acquire);
  const std::uint32_t time = m_secondOfDayTime.load(std::memory_order_acquire);
  if (m_sequence.load(std::memory_order_acquire) != sequence) return ByKernel();
  const std::uint64_t passed = ReadTicks() - startTicks;
  const std::uint64_t ticPs = startPs + Scale(passed, rate);
  const std::uint64_t inSecond = ticPs - secondPs;
  // After the line's end, with a counter that was set back, in the next second, without a line (its
  // length is 0), or while the line is being computed.
  if (__builtin_expect(passed >= lengthTicks || inSecond >= kSecondPs || (sequence & 1) != 0, 0))
    return Redraw();
  return {date, time | static_cast<std::uint32_t>(inSecond / 1'000'000'000), ticPs};
}

TraceClock::Sample TraceClock::Measure() noexcept {
  // The wall clock is read between two reads of the counter. If the reads were interrupted they are
  // repeated.
  Sample best{};
  std::uint64_t bestTook = ~std::uint64_t{0};
  for (int i = 0; i < 3; ++i) {
    const std::uint64_t before = ReadTicks();
    const std::uint64_t monotonicNs = ReadNs(CLOCK_MONOTONIC);
    const std::uint64_t after = ReadTicks();
    if (after - before >= bestTook) continue;
    bestTook = after - before;
    best = {before + bestTook / 2, monotonicNs, 0};
    if (bestTook < 200) break;
  }
  best.wallNs = ReadNs(CLOCK_REALTIME) - (ReadNs(CLOCK_MONOTONIC) - best.monotonicNs);
  return best;
}

Stamp TraceClock::Redraw() noexcept {
  std::uint32_t sequence = m_sequence.load(std::memory_order_relaxed);
  if (!m_usesCounter || (sequence & 1) != 0 ||
      !m_sequence.compare_exchange_strong(sequence, sequence + 1, std::memory_order_acquire))
    return ByKernel();
  const Sample now = Measure();
  if (now.monotonicNs - m_first.monotonicNs >= kRateNs && now.ticks > m_first.ticks) {
    Draw(now, now.ticks);
    if (now.monotonicNs - m_recent.monotonicNs >= kRateBaseNs) {
      m_first = m_recent;
      m_recent = now;
    }
  } else if (now.ticks < m_first.ticks) {
    m_first = now;  // the counter was set back: measure its rate again
    m_recent = now;
    m_lengthTicks.store(0, std::memory_order_release);
  }
  m_sequence.store(sequence + 2, std::memory_order_release);
  return StampOf(now.wallNs, std::max(now.monotonicNs * 1000, m_startPs.load()));
}

void TraceClock::Draw(const Sample& now, std::uint64_t ticks) noexcept {
  const std::uint64_t baseNs = now.monotonicNs - m_first.monotonicNs;
  const std::uint64_t baseTicks = now.ticks - m_first.ticks;
  auto rate = static_cast<std::uint64_t>((static_cast<Wide>(baseNs * 1000) << 32) / baseTicks);
  // The last point at which the old line can have been read: the new one begins no earlier.
  const std::uint64_t used = std::min(ticks - m_startTicks.load(), m_lengthTicks.load());
  const std::uint64_t reached = m_startPs.load() + Scale(used, m_psPerTick.load());
  const std::uint64_t truePs = now.monotonicNs * 1000;
  const std::uint64_t startPs = std::max(truePs, reached);
  // A line that ran ahead of the clock gets a smaller slope until the clock has caught up.
  const std::uint64_t ahead = startPs - truePs;
  rate -= static_cast<std::uint64_t>(static_cast<Wide>(rate) * std::min(ahead, kLineNs * 500) /
                                     (kLineNs * 1000));
  const Civil civil = CivilOf(now.wallNs);
  m_date.store(civil.date, std::memory_order_release);
  m_secondOfDayTime.store(civil.time, std::memory_order_release);
  m_secondPs.store(truePs - now.wallNs % kSecondNs * 1000, std::memory_order_release);
  m_startTicks.store(ticks, std::memory_order_release);
  m_startPs.store(startPs, std::memory_order_release);
  m_psPerTick.store(rate, std::memory_order_release);
  m_lengthTicks.store(static_cast<std::uint64_t>(static_cast<Wide>(kLineNs) * baseTicks / baseNs),
                      std::memory_order_release);
}
