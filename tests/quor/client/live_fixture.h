// A live connection to a fake service.
#pragma once

#include "fake_service.h"
#include "quor/client/trace_thread.h"
#include "support/trc_image.h"

class LiveTest : public testing::Test {
 protected:
  ~LiveTest() override {
    if (m_thread) m_thread->Disconnect();
  }
  void Connect() {
    m_thread =
        WhileServed([this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why); },
                    [this] {
                      m_peer = m_service.Accept();
                      m_peer->Subscribed();
                    });
    ASSERT_TRUE(m_thread) << m_why;
    m_peer->Ledger({});
  }
  // The service closes the connection, and the client connects again.
  void Reconnect(const std::string& instance = {}) {
    m_peer.reset();
    m_peer = m_service.Accept();
    ASSERT_TRUE(m_peer);
    m_peer->instance = instance;
    m_peer->Subscribed();
  }
  void Disconnect() {
    m_thread->Disconnect();
    m_thread = nullptr;
  }
  // The component and text of each trace until `count` have come, one a line; includes further
  // traces of the same drain.
  std::string Drain(std::size_t count) {
    std::string words;
    std::size_t taken = 0;
    EXPECT_TRUE(Eventually([&] {
      while (m_thread->HasTraces()) {
        TraceEvent_i* const trace = m_thread->NextTrace();
        words += trace->GetComponentName(m_names) + ": " + trace->GetText() + "\n";
        trace->Release();
        ++taken;
      }
      return taken >= count;
    })) << "only "
        << taken << " of " << count << ":\n"
        << words;
    return words;
  }
  // Proves that nothing else comes before the trace `last`, which the service sends last.
  std::string DrainUpTo(const std::string& last) {
    std::string words;
    while (words.find(last) == std::string::npos) {
      const std::string more = Drain(1);
      if (more.empty()) break;
      words += more;
    }
    return words;
  }
  std::string Counted() const {
    const auto counts = m_thread->GetCounts();
    const std::string withheld =
        counts.withheld > 0 ? std::to_string(counts.withheld) + " withheld, " : "";
    return std::to_string(counts.delivered) + " delivered, " + withheld +
           std::to_string(counts.lost) + " lost";
  }

  FakeService m_service;
  NameMap m_names;
  std::string m_why;
  std::unique_ptr<FakePeer> m_peer;
  TraceThread_i* m_thread = nullptr;
};
