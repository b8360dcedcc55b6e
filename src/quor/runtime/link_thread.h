// The one thread of the runtime. It keeps the link to the service, reads changed settings when it
// gets a Poke, and writes the file sink.
//
// Shape    Named "quor", with every signal blocked, started together with the segment. While no
//          service answers it tries again with a growing pause. It offers the same segment each
//          time, so that nothing in the ring is lost. It sleeps until its segment's event is
//          signalled, never at a descriptor, because the application may close them all. So it
//          checks once a second whether the service has ended. The thread that starts it reads the
//          environment for it. If the system refuses the thread, later calls of the application
//          start it.
// Owner    Lives until the process ends.
// Threads  Every function here may be called from any thread.
#pragma once

#include <atomic>

#include "quor/link/link.h"
#include "quor/link/paths.h"
#include "quor/ring/checked_descriptor.h"
#include "quor/runtime/first_answer.h"
#include "quor/runtime/sink_keeper.h"

class LinkThread {
 public:
  static LinkThread& Get();

  // The sink that the environment orders. Call it before Start, while nobody else knows the ring.
  void BeginSink(const std::optional<LinkSink>& sink) { m_sink.Begin(sink); }
  // `waitMs`: how long first traces wait for the service's settings; 0: not at all.
  void Start(const ServiceEnvironment& environment, unsigned waitMs);
  void AwaitAnswer() { m_answer.Await(); }
  // Starts the thread if the system has refused it, at most every 50 ms. Not in a signal handler,
  // because that allocates.
  void StartIfRefused();
  void ReportPoints();  // points were registered
  void ReportName();    // the application has another name: sends a new hello
  void PushSink() { m_sink.Push(); }
  // Waits until everything traced before the call was taken, and written if the sink is a file.
  bool WaitUntilTaken(unsigned milliseconds);
  // At the end of the process: gives a service that is being started time to take over the segment,
  // and reports what a file could not take.
  void AtExit();

  void BeforeFork();
  void AfterForkInParent();
  void AfterForkInChild();

 private:
  enum class State { Off, Refused, Trying, Linked, Alone };
  struct Session;  // used by the thread only

  void StartThread();
  static void* Enter(void* self);
  void Run();
  void Wait(Session& session, std::uint32_t seen);
  void Connect(Session& session);
  int Dial() const;
  void NoService(Session& session);
  void Disconnect(Session& session);
  void Receive(Session& session);
  bool Handle(Session& session, const LinkFrame& frame);
  bool Send(const std::vector<std::uint8_t>& frame);
  void Report(Session& session);
  void ReportChanges(Session& session);
  void Wake();

  std::atomic<State> m_state{State::Off};
  std::atomic<bool> m_linked{false};
  std::atomic<bool> m_pointsChanged{false}, m_nameChanged{false}, m_reportNow{false};
  CheckedDescriptor m_socket;               // used by the thread, and by a fork's child
  std::atomic<std::uint64_t> m_againMs{0};  // when a refused thread is tried again
  ServiceEnvironment m_environment;
  FirstAnswer m_answer;
  SinkKeeper m_sink;
};
