// A stopwatch and a span of time in one object, in picoseconds.
//
// Owner    Counted: a new timer has the count 0, and its maker calls AddRef. The Release that
//          brings the count to 0 destroys it. A Release at count 0 returns -1 and destroys nothing.
// Errors   None. A span that no integer can hold becomes the nearest one that can.
// Threads  One at a time; timers have no lock.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "base/quor_str.h"

class trc_Timer_i {
 public:
  // The order of the virtual operations is an interface.
  virtual std::int32_t AddRef() = 0;   // returns the new count
  virtual std::int32_t Release() = 0;  // the same
  virtual void Start() = 0;            // does nothing when running
  virtual void Stop() = 0;             // adds the time since the start; nothing when stopped
  // Sets the value; a running timer continues from there.
  virtual void SetPicoseconds(double picoseconds) = 0;
  virtual double GetTicPeriod() const = 0;  // picoseconds per tic of the counter

  // The value. Kept: Stop adds to the value, but reading a running timer replaces the value by the
  // time since the start or the last read.
  virtual double GetPicoseconds() = 0;
  virtual double GetNanoseconds() = 0;
  virtual double GetMicroseconds() = 0;
  virtual std::int64_t GetMilliseconds() = 0;  // towards zero
  virtual std::int64_t GetSeconds() = 0;       // towards zero
  // "1.25 ms": three significant digits and the largest unit that the value reaches, from "ps" to
  // "days". A negative value stays in "ps".
  virtual QuorStr::String_t Format() = 0;
  virtual bool IsRunning() const = 0;

  // These first update the values that they read.
  virtual trc_Timer_i& operator-=(trc_Timer_i& other) = 0;
  virtual trc_Timer_i& operator+=(trc_Timer_i& other) = 0;
  virtual trc_Timer_i& operator/=(std::int32_t divisor) = 0;  // by 0 gives an infinity
  virtual trc_Timer_i& operator*=(std::int32_t factor) = 0;

  virtual ~trc_Timer_i() = default;
  // Copies everything except the reference count.
  virtual trc_Timer_i& operator=(const trc_Timer_i& other) = 0;

 protected:
  trc_Timer_i() = default;
  trc_Timer_i(const trc_Timer_i&) = default;
};

// A stopped timer of value 0.
trc_Timer_i* CreateTimer();
// A timer with the state of the other one.
trc_Timer_i* CreateTimer(const trc_Timer_i& other);
// Writes Format.
std::ostream& operator<<(std::ostream& stream, trc_Timer_i& timer);

// The counter that all timers read. Tests replace it.
struct TicCounter {
  std::int64_t (*now)();
  std::int64_t (*frequency)();  // tics per second
};
// Returns the previous counter, and forgets its frequency. The first timer made after that asks for
// the frequency, and each timer that is made while it is 0 asks again.
TicCounter SetTicCounter(TicCounter counter);
