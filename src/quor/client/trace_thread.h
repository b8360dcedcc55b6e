// A live connection to the trace service of one machine.
//
// Owner    Disconnect ends and destroys it: the pointer is invalid afterwards. Borrows the name map
//          until then.
// Errors   ConnectToTraceService returns null when no connection can be made within 5 seconds. A
//          connection that breaks later is made again after a growing pause. The gap is shown as a
//          trace of component "Quor", category "Loss".
// Threads  Every operation on the interface thread. A reader thread of its own fills a bounded
//          queue and never touches the map. Names enter the map inside HasTraces and NextTrace,
//          before the trace that uses them is given out. Ids stay valid for the connection's life,
//          over reconnects and clears.
#pragma once

#include <cstdint>
#include <string>

#include "base/quor_str.h"
#include "quor/client/stream/source_filter_asker.h"
#include "records/trace_event.h"

class TraceThread_i {
 public:
  // `machine`: see ServiceLink. `why` gets the reason when the result is null. `atSource`: see
  // FilterAtSource, from the first trace on.
  static TraceThread_i* ConnectToTraceService(const QuorStr::String_t& machine, NameMap& names,
                                              std::string* why = nullptr,
                                              const std::string& atSource = {});

  // The order of the virtual operations is an interface, like that of TraceEvent_i.
  virtual void Disconnect() = 0;  // within a second
  // Is a trace waiting? Considers only traces that had arrived when the current drain began (the
  // first call after a negative answer begins a new drain), so that a drain ends however fast
  // traces come. A drain also ends after 50 ms, so that the window stays responsive. While paused:
  // no.
  virtual int HasTraces() = 0;
  virtual void Reserved() {}  // no caller; keeps the place
  // The oldest waiting trace; the caller owns it. Null when none is waiting.
  virtual TraceEvent_i* NextTrace() = 0;
  // Takes effect immediately, also for traces that have arrived: they are given out after Resume.
  virtual void Pause() = 0;
  virtual void Resume() = 0;
  // Additions, behind the operations of the interface. Exact counts of this connection, for trc and
  // tests.
  struct Counts {
    std::uint64_t delivered = 0;  // given out or waiting, without loss reports
    std::uint64_t lost = 0;       // reported by the service, or found as a gap
    std::uint64_t withheld = 0;   // by the filter at the source: neither delivered nor lost
    // Of a cluster, and no losses: came before, and came after they were counted as lost.
    std::uint64_t twice = 0, late = 0;
  };
  virtual Counts GetCounts() const = 0;
  // False while a broken connection is not restored yet.
  virtual bool IsUp() const { return true; }
  // Waits until HasTraces may have an answer, until a signal was caught, or for `milliseconds`. May
  // return early, as this default does. For a program without an event loop.
  virtual void AwaitTraces(int) {}
  // Hands a filter text to the service: from then on it sends only traces for which the text holds,
  // and counts the others as withheld. Sent again on each connection. Empty: all come. Traces that
  // match none may still come at any time; the caller filters what is given out.
  virtual void FilterAtSource(const std::string&) {}
  virtual SourceFilterState GetSourceFilter() const { return {}; }

 protected:
  virtual ~TraceThread_i() = default;
};

// The host name without its domain; "localhost" when the system has none.
std::string _trc_GetHostName();
