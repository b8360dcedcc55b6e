// A stopwatch and a span of time in one object, in picoseconds.
//
// Owner    Counted: a new timer has the count 0, its maker calls AddRef, and the Release that
//          brings the count to 0 destroys it. A Release of a count that never rose gives -1 and
//          destroys nothing.
// Errors   None. A span that no integer holds is cut to the nearest one.
// Threads  One at a time; timers have no lock.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "base/quor_str.h"

class trc_Timer_i {
 public:
  // The order of the virtual operations is an interface.
  virtual std::int32_t AddRef() = 0;   // gives the new count
  virtual std::int32_t Release() = 0;  // the same
  virtual void Start() = 0;            // nothing when running
  virtual void Stop() = 0;             // adds the time since the start; nothing when stopped
  // Sets the value; a running timer goes on from now.
  virtual void SetPicoseconds(double picoseconds) = 0;
  virtual double GetTicPeriod() const = 0;  // picoseconds per tic of the counter

  // The value. Kept: where Stop adds, a read of a running timer replaces the value by the time
  // since the start or the last read.
  virtual double GetPicoseconds() = 0;
  virtual double GetNanoseconds() = 0;
  virtual double GetMicroseconds() = 0;
  virtual std::int64_t GetMilliseconds() = 0;  // towards zero
  virtual std::int64_t GetSeconds() = 0;       // towards zero
  // "1.25 ms": three significant digits and the largest unit that the value reaches, from "ps" to
  // "days". A negative value stays in "ps".
  virtual QuorStr::String_t Format() = 0;
  virtual bool IsRunning() const = 0;

  // These bring the values that they read up to date first.
  virtual trc_Timer_i& operator-=(trc_Timer_i& other) = 0;
  virtual trc_Timer_i& operator+=(trc_Timer_i& other) = 0;
  virtual trc_Timer_i& operator/=(std::int32_t divisor) = 0;  // by 0 gives an infinity
  virtual trc_Timer_i& operator*=(std::int32_t factor) = 0;

  virtual ~trc_Timer_i() = default;
  // All but the reference count.
  virtual trc_Timer_i& operator=(const trc_Timer_i& other) = 0;

 protected:
  trc_Timer_i() = default;
  trc_Timer_i(const trc_Timer_i&) = default;
};

// A stopped timer of value 0.
trc_Timer_i* CreateTimer();
// A timer that goes on as the other does.
trc_Timer_i* CreateTimer(const trc_Timer_i& other);
// Writes Format.
std::ostream& operator<<(std::ostream& stream, trc_Timer_i& timer);

// The counter that all timers read. Tests put one of their own in its place.
struct TicCounter {
  std::int64_t (*now)();
  std::int64_t (*frequency)();  // tics per second
};
// Gives the counter until now, and forgets its frequency. The first timer made from then on asks
// for the frequency, and each timer made while it is 0 asks again.
TicCounter SetTicCounter(TicCounter counter);
