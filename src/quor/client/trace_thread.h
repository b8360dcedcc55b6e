// A live connection to the trace service of one machine.
//
// Owner    Ends with Disconnect, which destroys it: the pointer is dead afterwards. Borrows the
//          name map until then.
// Errors   ConnectToTraceService gives null when no connection can be made within 5 seconds. A
//          connection that breaks later mends itself with back-off; the gap shows as a trace of
//          component "Quor", category "Loss".
// Threads  Every operation on the interface thread. A reader thread of its own fills a bounded
//          queue and never touches the map: names enter it inside HasTraces and NextTrace, before
//          the trace that uses them is given out. Ids stay valid for the connection's life, over
//          reconnects and clears.
#pragma once

#include <cstdint>
#include <string>

#include "base/quor_str.h"
#include "records/trace_event.h"

class TraceThread_i {
 public:
  // `why` gets the reason when the result is null.
  static TraceThread_i* ConnectToTraceService(const QuorStr::String_t& machine, NameMap& names,
                                              std::string* why = nullptr);

  // The order of the virtual operations is an interface, like that of TraceEvent_i.
  virtual void Disconnect() = 0;  // within a second
  // Does a trace wait? Answers from what had arrived when the current drain began (the first call
  // after an empty answer takes a new look), so that a drain ends however fast traces come; and for
  // 50 ms, so that the window lives. Nothing waits while paused.
  virtual int HasTraces() = 0;
  virtual void Reserved() {}  // no caller; keeps the place
  // The oldest waiting trace; the caller owns it. Null when none waits.
  virtual TraceEvent_i* NextTrace() = 0;
  // At once, also for what has arrived: that is given out after Resume.
  virtual void Pause() = 0;
  virtual void Resume() = 0;
  // Behind the table: exact counts of this connection, for trc and tests.
  struct Counts {
    std::uint64_t delivered = 0;  // given out or waiting, but for words on losses
    std::uint64_t lost = 0;       // told by the service, or found in a gap
  };
  virtual Counts GetCounts() const = 0;
  // False while a connection that broke has not mended itself yet.
  virtual bool IsUp() const { return true; }

 protected:
  virtual ~TraceThread_i() = default;
};

// The host name without its domain; "localhost" when the system has none.
std::string _trc_GetHostName();
