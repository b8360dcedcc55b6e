// The traces of one source as logs and spans.
//
// Shape    A Begin and the End that closes it on its thread are one span, every other trace is one
//          log. A block that cannot get its End any more becomes a span that says so. So each trace
//          is in exactly one message.
//          The same traces make the same messages, whichever process makes them, as long as it
//          begins where the other one was saved.
// Owner    Borrows the totals, which outlive it.
// Threads  One.
#pragma once

#include <string>
#include <unordered_map>

#include "quor/otlp/out/open_block.h"
#include "quor/otlp/out/out_sink.h"
#include "quor/otlp/out/out_state.pb.h"

class OutSource {
 public:
  OutSource(std::string instance, OpenTotals& totals)
      : m_instance(std::move(instance)), m_totals(totals) {}
  ~OutSource();
  OutSource(OutSource&& other) = delete;

  // In the order of their serials.
  void Take(const OutTrace& trace, OutSink& sink);
  // A report without a serial. `lost`: what it adds to the count of lost traces.
  void Report(const OutTrace& report, std::uint64_t lost, OutSink& sink);
  // An End may be missing from here on, or nothing more comes: all open blocks end here.
  void Interrupt(OutSink& sink);

  const std::string& Machine() const { return m_machine; }
  const std::string& App() const { return m_app; }
  const std::string& Process() const { return m_process; }

  void Save(quor::otlp::out::Source& to) const;
  // REQUIRES: nothing was taken. False: it cannot be a state that was saved.
  bool Load(const quor::otlp::out::Source& from);

 private:
  OutOrigin Origin(const OutTrace& trace) const;
  OpenThread* ThreadOf(const OutTrace& trace);
  void Remember(const OutTrace& trace);
  bool Begin(const OutTrace& trace, std::uint64_t time);
  void End(const OutTrace& trace, std::uint64_t time, OutSink& sink);
  void SendSpan(OpenThread& thread, const std::string& name, std::uint64_t end,
                const OutTrace* last, OutSink& sink);
  std::uint64_t TimeOf(const OutTrace& trace);

  const std::string m_instance;
  OpenTotals& m_totals;
  OutClock m_clock;
  std::uint64_t m_last = 0;  // the time of the last trace
  std::string m_machine, m_app, m_process;
  // Only those with something open.
  std::unordered_map<std::string, OpenThread> m_threads;
};
