// The document of a live connection to the trace service of one machine: a monitor.
//
// It does not listen: its frame calls Drain on a timer, and each drain takes all that waits, trims
// what is too old, writes the running capture, and tells the views once.
//
// Owner    Owns its connection, which borrows the name map until the document's end, and the
//          capture file.
// Errors   ConnectToMachine reports by bool and says nothing. ToggleCapture shows its own words. A
//          capture that can no longer be written ends without a word.
// Threads  Interface thread. Names enter the map inside the connection's operations, so that no
//          lock is needed.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "documents/trace_doc.h"
#include "quor/client/trace_thread.h"
#include "records/trc_writer.h"

class CTraceRealtimeDoc : public CTraceDoc {
 public:
  // Makes the connection to a machine; null when none can be made.
  using Connector = std::function<TraceThread_i*(const QuorStr::String_t& machine, NameMap& names)>;
  static TraceThread_i* ConnectToTraceService(const QuorStr::String_t& machine, NameMap& names);

  explicit CTraceRealtimeDoc(Host& host, Connector connector = ConnectToTraceService);
  ~CTraceRealtimeDoc() override;

  // False: no connection can be made. An empty text gives a document that stays without one: it
  // goes on loading, takes no traces and cannot be paused. REQUIRES: not connected.
  bool ConnectToMachine(const std::string& machine);
  // Takes all waiting traces. Any number of hints 1005, then at most one 1004.
  void Drain();
  // Takes ownership of the trace. At the limit the oldest traces go first: the views are told 1005
  // while the traces are valid, then they are released, and taken out of `pending`, a hint that the
  // caller has yet to send.
  void AddTrace(TraceEvent_i* event, CTraceHint* pending = nullptr);

  // Ends the running capture, or asks for a file and begins one with what arrives from then on.
  // False when the file cannot be made; true also when the user names none.
  //
  // Kept: the names' written marks stay as they are, so that a file of a second capture lacks the
  // names that the first one has, and a save in between or during a capture changes which names are
  // still written. Safe: the ids are whole, a reader shows them without names. The help says so.
  bool ToggleCapture();
  // Without a connection nothing happens.
  void TogglePause();

  bool IsStream() const override { return m_connection != nullptr; }
  std::string WhyEmpty() const override;

  const std::string& Machine() const { return m_machine; }  // as the user typed it
  bool IsConnected() const { return m_connection != nullptr; }
  bool IsCapturing() const { return m_capture.IsOpen(); }
  const std::string& CaptureName() const { return m_captureName; }  // of the last capture's file
  // False also while a connection that broke has not mended itself yet.
  bool IsLive() const { return m_connection && m_connection->IsUp(); }
  bool IsPaused() const { return m_paused; }
  // What a monitor of the machine is called.
  static std::string TitleFor(const std::string& machine);

 private:
  static constexpr std::size_t kTrimTraces = 100;
  void TellWhyEmpty();
  void Trim(CTraceHint* pending);
  bool BeginCapture(const std::string& name);

  const Connector m_connector;
  TraceThread_i* m_connection = nullptr;
  std::string m_machine;
  TrcWriter m_capture;  // open while a capture runs
  std::string m_captureName;
  bool m_paused = false;
  bool m_toldLive = true;  // IsLive, as the views know it
};
