// The whole path of live traces: a traced application, a real service, a monitor's document, rows.
#include <gmock/gmock.h>

#include <map>
#include <set>

#include "demo_process.h"
#include "documents/trace_realtime_doc.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "support/fake_row_list.h"
#include "support/recording_host.h"

namespace {

class LiveDemo : public testing::Test {
 protected:
  LiveDemo() { m_quord.Start(); }
  void SetUp() override {
    ASSERT_FALSE(HasFatalFailure());
    m_document = std::make_unique<CTraceRealtimeDoc>(m_host);
    ASSERT_TRUE(m_document->ConnectToMachine("localhost")) << m_quord.Log();
    m_view = std::make_unique<CTraceView>(
        *m_document, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
    m_view->OnInitialUpdate();
  }
  // Drains as the frame's timer does, until the document holds so many.
  bool DrainUntil(std::size_t traces) {
    return WaitFor([&] {
      m_document->Drain();
      return m_document->m_traces.size() >= traces;
    });
  }
  std::string Component(const TraceEvent_i& event) {
    return event.GetComponentName(m_document->m_names);
  }

  ~LiveDemo() override { g_traceLimit = m_traceLimit; }

  const std::uint32_t m_traceLimit = g_traceLimit;
  QuordProcess m_quord;
  RecordingHost m_host;
  std::unique_ptr<CTraceRealtimeDoc> m_document;
  std::unique_ptr<CTraceView> m_view;
};

TEST_F(LiveDemo, EveryTraceOfTheApplicationBecomesARow) {
  DemoProcess demo({"--rate", "4000", "--for", "1", "--threads", "4", "--name", "shop"});
  ASSERT_EQ(demo.Wait(), 0) << demo.Err();
  const unsigned long traced = demo.Traces();
  ASSERT_GT(traced, 1000u);
  ASSERT_TRUE(DrainUntil(traced)) << m_document->m_traces.size() << " of " << traced;
  EXPECT_EQ(m_document->m_traces.size(), traced);
  EXPECT_EQ(m_view->List().ItemCount(), static_cast<int>(traced));

  std::set<std::string> components;
  std::map<std::string, int> open;  // blocks, by thread and text
  for (std::size_t i = 0; i < traced; ++i) {
    const TraceEvent_i& event = *m_document->m_traces[i];
    EXPECT_EQ(event.GetSequenceNumber(), m_document->m_traces[0]->GetSequenceNumber() + i);
    EXPECT_EQ(event.GetAppName(m_document->m_names), "shop");
    EXPECT_EQ(event.GetMachineName(m_document->m_names), _trc_GetHostName());
    components.insert(Component(event));
    const std::string text = event.GetText(), thread = event.GetTidName(m_document->m_names);
    if (text.rfind("Begin: ", 0) == 0) ++open[thread + text.substr(7)];
    if (text.rfind("End: ", 0) == 0) --open[thread + text.substr(5)];
  }
  EXPECT_EQ(components, (std::set<std::string>{"Worker", "Http", "Orders", "Database", "Payment"}));
  EXPECT_GT(open.size(), 4u);
  for (const auto& [block, balance] : open) EXPECT_EQ(balance, 0) << block;
}

// Traces come in faster than they are sent on. How long a drain takes is tested with a service that
// sends without end (LiveTest).
TEST_F(LiveDemo, UnderAFloodEveryTraceIsDeliveredOrCountedAsLost) {
  g_traceLimit = 10'000'000;  // none is removed before it is counted
  DemoProcess demo({"--rate", "0", "--for", "1", "--name", "flood"});
  std::uint64_t delivered = 0, lost = 0;
  const auto drain = [&] {
    m_document->Drain();
    const std::size_t taken = m_document->m_traces.size();
    m_document->m_traces.ForEach(0, [&](TraceEvent_i* event) {
      if (Component(*event) == "Quor")
        lost += std::stoull(event->GetText());
      else
        ++delivered;
    });
    m_document->DeleteContents();
    return taken;
  };
  ASSERT_TRUE(WaitFor([&] { return drain() > 0; }));
  ASSERT_TRUE(WaitFor([&] {
    drain();
    return demo.Err().find(" lost") != std::string::npos;
  }));
  const int status = demo.Wait();
  EXPECT_TRUE(status == 0 || status == 1) << demo.Err();  // 1: the ring was full for a moment
  EXPECT_TRUE(WaitFor([&] {
    drain();
    return delivered + lost >= demo.Traces();
  })) << delivered
      << " delivered, " << lost << " lost; " << demo.Err();
  EXPECT_EQ(delivered + lost, demo.Traces());
}

TEST_F(LiveDemo, AMonitorOfAServiceThatStopsStaysOpenAndTheApplicationGoesOn) {
  DemoProcess demo({"--rate", "500"});
  ASSERT_TRUE(DrainUntil(20));
  m_quord.Kill();
  EXPECT_TRUE(WaitFor([&] { return m_document->Drain(), !m_document->IsLive(); }));
  EXPECT_TRUE(m_document->IsConnected());
  // All that came of the first service is here: what comes now is the second one's.
  m_document->Drain();
  const std::size_t held = m_document->m_traces.size();
  m_quord.Start();
  EXPECT_TRUE(DrainUntil(held + 20));
  EXPECT_TRUE(m_document->IsLive());
  demo.Signal(SIGINT);
  EXPECT_EQ(demo.Wait(), 0) << demo.Err();
}

}  // namespace
