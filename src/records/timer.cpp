#include "records/timer.h"

#include <cmath>
#include <ctime>
#include <limits>
#include <ostream>

namespace {

constexpr double kNanosecondPs = 1000;
constexpr double kMicrosecondPs = kNanosecondPs * 1000;
constexpr double kMillisecondPs = kMicrosecondPs * 1000;
constexpr double kSecondPs = kMillisecondPs * 1000;
constexpr double kMinutePs = kSecondPs * 60;
constexpr double kHourPs = kMinutePs * 60;
constexpr double kDayPs = kHourPs * 24;

struct Unit {
  double sizePs;
  const char* suffix;
};
// Largest first. The singular is never used.
constexpr Unit kUnits[] = {{kDayPs, " days"},     {kHourPs, " hours"},     {kMinutePs, " minutes"},
                           {kSecondPs, " secs"},  {kMillisecondPs, " ms"}, {kMicrosecondPs, " us"},
                           {kNanosecondPs, " ns"}};

constexpr char kThreeDigits[] = "%.3Lg";

std::int64_t MonotonicNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

std::int64_t NanosecondsPerSecond() {
  return 1'000'000'000;
}

// Shared by all timers.
TicCounter counter = {&MonotonicNanoseconds, &NanosecondsPerSecond};
std::int64_t counterFrequency = 0;
double ticPeriodPs = 0;

void LearnTicPeriod() {
  if (counterFrequency == 0) counterFrequency = counter.frequency();
  ticPeriodPs = kSecondPs / static_cast<double>(counterFrequency);
}

std::int64_t WholeUnits(double picoseconds, double unitPs) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63, the first that does not fit
  const double units = std::trunc(picoseconds / unitPs);
  if (std::isnan(units)) return 0;
  if (units >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (units < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(units);
}

class _trc_Timer_t final : public trc_Timer_i {
 public:
  _trc_Timer_t() { LearnTicPeriod(); }
  _trc_Timer_t(const _trc_Timer_t&) = delete;
  _trc_Timer_t& operator=(const _trc_Timer_t&) = delete;

  std::int32_t AddRef() override { return ++m_references; }
  std::int32_t Release() override {
    const std::int32_t references = --m_references;
    if (references == 0) delete this;
    return references;
  }
  void Start() override {
    if (m_running) return;
    m_startTic = counter.now();
    m_running = true;
  }
  void Stop() override {
    if (!m_running) return;
    m_valuePs += SinceStartPs(counter.now());
    m_running = false;
  }
  void SetPicoseconds(double picoseconds) override {
    m_valuePs = picoseconds;
    if (m_running) m_startTic = counter.now();
  }
  double GetTicPeriod() const override { return ticPeriodPs; }
  double GetPicoseconds() override {
    Update();
    return m_valuePs;
  }
  double GetNanoseconds() override { return GetPicoseconds() / kNanosecondPs; }
  double GetMicroseconds() override { return GetPicoseconds() / kMicrosecondPs; }
  std::int64_t GetMilliseconds() override { return WholeUnits(GetPicoseconds(), kMillisecondPs); }
  std::int64_t GetSeconds() override { return WholeUnits(GetPicoseconds(), kSecondPs); }
  QuorStr::String_t Format() override {
    const double spanPs = GetPicoseconds();
    for (const Unit& unit : kUnits)
      if (spanPs >= unit.sizePs)
        return QuorStr::NumToStr(spanPs / unit.sizePs, kThreeDigits) + unit.suffix;
    return QuorStr::NumToStr(spanPs, kThreeDigits) + " ps";
  }
  bool IsRunning() const override { return m_running; }

  trc_Timer_i& operator-=(trc_Timer_i& other) override {
    Update();
    m_valuePs -= other.GetPicoseconds();
    return *this;
  }
  trc_Timer_i& operator+=(trc_Timer_i& other) override {
    Update();
    m_valuePs += other.GetPicoseconds();
    return *this;
  }
  trc_Timer_i& operator/=(std::int32_t divisor) override {
    Update();
    m_valuePs /= divisor;
    return *this;
  }
  trc_Timer_i& operator*=(std::int32_t factor) override {
    Update();
    m_valuePs *= factor;
    return *this;
  }
  trc_Timer_i& operator=(const trc_Timer_i& other) override {
    const auto& timer = static_cast<const _trc_Timer_t&>(other);  // the one implementation
    m_startTic = timer.m_startTic;
    m_valuePs = timer.m_valuePs;
    m_running = timer.m_running;
    return *this;
  }

 private:
  double SinceStartPs(std::int64_t now) const {
    return static_cast<double>(now - m_startTic) * ticPeriodPs;
  }
  void Update() {
    if (!m_running) return;
    const std::int64_t now = counter.now();
    m_valuePs = SinceStartPs(now);
    m_startTic = now;
  }

  bool m_running = false;
  double m_valuePs = 0;
  std::int64_t m_startTic = 0;
  std::int32_t m_references = 0;
};

}  // namespace

trc_Timer_i* CreateTimer() {
  return new _trc_Timer_t;
}

trc_Timer_i* CreateTimer(const trc_Timer_i& other) {
  trc_Timer_i* const timer = CreateTimer();
  *timer = other;
  return timer;
}

std::ostream& operator<<(std::ostream& stream, trc_Timer_i& timer) {
  return stream << timer.Format();
}

TicCounter SetTicCounter(TicCounter replacement) {
  const TicCounter before = counter;
  counter = replacement;
  counterFrequency = 0;
  return before;
}
