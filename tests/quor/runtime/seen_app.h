// One traced application from its service's point of view: maps the segment, consumes traces, keeps
// them.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "quor/link/link.h"
#include "quor/link/link_socket.h"
#include "quor/quor.h"
#include "quor/ring/ring_consumer.h"
#include "quor/ring/segment_names.h"
#include "quor/ring/wake_event.h"
#include "records/raw_trace.h"
#include "support/wait_for.h"

// The counts of libquor in this process.
inline quor_counts Counts() {
  quor_counts counts{};
  quor_get_counts(&counts);
  return counts;
}

struct SeenTrace {
  std::string machine, app, component, category, pid, tid, file, text, stack;
  unsigned line = 0;
  int attributes = 0;
  std::uint32_t count = 0, date = 0, time = 0;
  std::uint64_t ticPs = 0;
};

// One application from its service's point of view.
class SeenApp {
 public:
  SeenApp(int socket, SegmentMap segment, LinkHello hello)
      : m_hello(std::move(hello)),
        m_socket(socket),
        m_segment(std::move(segment)),
        m_consumer(m_segment),
        m_names(m_segment),
        m_points(m_segment),
        m_taker(m_hello.taker) {
    Send(EncodeWelcome());
  }
  ~SeenApp() {
    close(m_socket);
    Signal(m_segment.Header()->wakeEvent);
  }
  SeenApp(const SeenApp&) = delete;
  SeenApp& operator=(const SeenApp&) = delete;

  SegmentMap& Segment() { return m_segment; }
  std::uint64_t Reported() const {
    std::uint64_t lost = 0;
    for (const LinkReport& report : m_reports) lost += report.lost;
    return lost;
  }
  void Send(const std::vector<std::uint8_t>& bytes) {
    SendOnLink(m_socket, bytes);
    Signal(m_segment.Header()->wakeEvent);
  }
  void SendSink(SinkKind kind, const std::string& name, const std::string& options) {
    m_consumer.Publish();
    m_consuming = m_consuming && kind != SinkKind::File;
    m_answered = false;
    Send(EncodeSink({kind, name, options}));
  }
  void SetAll(std::uint32_t word) {
    Pump();
    for (std::uint32_t i = 0; i < m_points.Count(); ++i) m_points.SetSettings(i, word);
    m_points.SetDefault(word);
    Send(EncodePoke());
  }

  // Reads the application's messages and, unless told not to, its traces.
  void Pump() {
    std::uint8_t bytes[4096];
    const LinkReceived got = ReceiveOnLink(m_socket, bytes, sizeof bytes);
    m_ended = m_ended || got.ended;
    const std::uint8_t* from = bytes;
    LinkFrame frame;
    while (m_decoder.Feed(from, bytes + got.bytes, frame) == LinkDecoder::Result::Frame) {
      if (frame.type == LinkType::Taker) m_answered = true, m_taker = frame.taker;
      if (frame.type == LinkType::Taker) TakeOver();
      if (frame.type == LinkType::Report) m_reports.push_back(frame.report);
    }
    EXPECT_TRUE(m_points.ReadNew(m_pointNames));
    if (m_consuming && !m_paused) Consume();
  }
  // Reads everything that remains of an application that has ended.
  void Finish() {
    RingItem item;
    RingStep step;
    while ((step = m_consumer.NextOfDead(item)) == RingStep::Item || step == RingStep::Later)
      if (step == RingStep::Item) Take(item);
    m_consumer.Publish();
  }

  std::string NameOf(AppNameId id) {
    if (m_texts.count(id) == 0) {
      std::vector<SegmentName> fresh;
      EXPECT_TRUE(m_names.ReadNew(fresh));
      for (const SegmentName& name : fresh) m_texts[name.id] = name.text;
    }
    return m_texts.at(id);
  }
  std::vector<std::string> PointNames() {
    std::vector<std::string> names;
    for (const SegmentPointNames& point : m_pointNames)
      names.push_back(NameOf(point.component) + "/" + NameOf(point.category));
    return names;
  }
  bool Has(const std::string& text) {
    Pump();
    for (const SeenTrace& trace : m_traces)
      if (trace.text == text) return true;
    return false;
  }

  LinkHello m_hello;
  std::vector<SeenTrace> m_traces;
  std::vector<LinkReport> m_reports;
  std::uint64_t m_drops = 0;
  bool m_ended = false, m_answered = false, m_paused = false;

 private:
  void TakeOver() {
    if (!m_consuming && m_taker == RingTaker::Service) m_consumer.Resume();
    m_consuming = m_taker == RingTaker::Service;
  }
  void Consume() {
    RingItem item;
    RingStep step;
    while ((step = m_consumer.Next(item)) == RingStep::Item) Take(item);
    EXPECT_NE(step, RingStep::Broken);
    m_consumer.Publish();
  }
  void Take(const RingItem& item) {
    m_drops += item.dropsBefore;
    EXPECT_EQ(item.damagedBefore, 0u);
    if (item.trace.empty()) return;
    const RawAppTrace raw(item.trace.data());
    SeenTrace trace;
    trace.machine = NameOf(raw.MachineId());
    trace.app = NameOf(raw.AppId());
    trace.component = NameOf(raw.ComponentId());
    trace.category = NameOf(raw.CategoryId());
    trace.pid = NameOf(raw.PidId());
    trace.tid = NameOf(raw.TidId());
    trace.file = NameOf(raw.SourceFileId());
    trace.line = raw.SourceLine();
    trace.attributes = raw.Attributes();
    trace.count = raw.SequenceNumber();
    trace.date = raw.Date();
    trace.time = raw.Time();
    trace.ticPs = raw.TicCount();
    trace.text.assign(reinterpret_cast<const char*>(item.trace.data()) + 42, raw.TextLength());
    trace.stack = raw.Stack();
    m_traces.push_back(std::move(trace));
  }

  int m_socket;
  SegmentMap m_segment;

 public:
  RingConsumer m_consumer;

 private:
  SegmentNames m_names;
  SegmentPointsReader m_points;
  std::vector<SegmentPointNames> m_pointNames;
  std::map<AppNameId, std::string> m_texts;
  LinkDecoder m_decoder;

 public:
  RingTaker m_taker;

 private:
  bool m_consuming = true;
};
