// The document of a live connection to the trace service of one machine: a monitor.
//
// It does not wait for traces: its frame calls Drain on a timer. Each drain takes all waiting
// traces, trims the oldest, writes the running capture, and notifies the views once.
//
// Owner    Owns its connection, which borrows the name map until the document's end, and the
//          capture file.
// Errors   ConnectToMachine returns a bool and shows nothing. ToggleCapture shows its own messages.
//          A capture that can no longer be written ends without a message.
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

  // False: no connection can be made. An empty text makes a document without a connection: it stays
  // in the state of loading, takes no traces and cannot be paused. REQUIRES: not connected.
  bool ConnectToMachine(const std::string& machine);
  // Takes all waiting traces. Any number of hints 1005, then at most one 1004.
  void Drain();
  // Takes ownership of the trace. At the limit the oldest traces are removed first: the views get
  // 1005 while the traces are valid. Then the traces are released and removed from `pending`, a
  // hint that the caller has not sent yet.
  void AddTrace(TraceEvent_i* event, CTraceHint* pending = nullptr);

  // Ends the running capture, or asks for a file and begins a capture of the traces that arrive
  // from then on. False when the file cannot be made; true also when the user chooses none.
  //
  // Kept: the names' written marks are not cleared. So the file of a second capture lacks the names
  // that are in the first one, and a save between or during captures changes which names are still
  // written. Safe: the ids are whole, and a reader shows them without names. The help says so.
  bool ToggleCapture();
  // Without a connection nothing happens.
  void TogglePause();
  // The service sends only traces for which the filter text holds; see TraceThread_i. Those that it
  // withholds never come, also not when the text is taken back.
  void FilterAtSource(const std::string& text);
  SourceFilterState SourceFilter() const;
  TraceThread_i::Counts Counts() const;

  bool IsStream() const override { return m_connection != nullptr; }
  std::string WhyEmpty() const override;

  const std::string& Machine() const { return m_machine; }  // as the user typed it
  bool IsConnected() const { return m_connection != nullptr; }
  bool IsCapturing() const { return m_capture.IsOpen(); }
  const std::string& CaptureName() const { return m_captureName; }  // of the last capture's file
  // False also while a broken connection is not restored yet.
  bool IsLive() const { return m_connection && m_connection->IsUp(); }
  bool IsPaused() const { return m_paused; }
  // The title of a monitor of the machine.
  static std::string TitleFor(const std::string& machine);

 private:
  static constexpr std::size_t kTrimTraces = 100;
  // Whether traces of this window stayed at the source: for the text that is there, or for one that
  // is gone.
  enum class Withheld { Nothing, Now, Before };
  Withheld HowWithheld() const;
  void NotifyWhyEmpty();
  void Trim(CTraceHint* pending);
  bool BeginCapture(const std::string& name);

  const Connector m_connector;
  TraceThread_i* m_connection = nullptr;
  std::string m_machine;
  TrcWriter m_capture;  // open while a capture runs
  std::string m_captureName;
  bool m_paused = false;
  bool m_notifiedLive = true;  // the value of IsLive that the views know
  Withheld m_notifiedWithheld = Withheld::Nothing;
};
