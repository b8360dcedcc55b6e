// quord, quor-bridge otlp-in and trc together.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/bridge/otlpin/bridge_process.h"
#include "apps/quord/quord_client.h"
#include "apps/trc/trc_process.h"

// trc that prints what comes until so many traces are there.
struct Watcher {
  explicit Watcher(std::size_t traces)
      : trc({{"tail", "--color", "never", "--for", "30", "--count", std::to_string(traces),
              "--columns", "Machine,Application,Component,PID,TID,Trace,Source"}}) {}
  // Without the headings, and with one space between the columns.
  std::vector<std::string> Rows() {
    const TrcRun run = trc.Finish();
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<std::string> rows;
    for (std::size_t at = run.out.find('\n') + 1; at != 0 && at < run.out.size();) {
      const std::size_t end = run.out.find('\n', at);
      std::string row = run.out.substr(at, end - at);
      while (row.find("  ") != row.npos) row.erase(row.find("  "), 1);
      rows.push_back(row);
      at = end + 1;
    }
    return rows;
  }
  TrcProcess trc;
};

class OtlpInFixture : public testing::Test {
 protected:
  void StartQuord() { ASSERT_NO_FATAL_FAILURE(m_quord.Start()); }
  void Connect(const BridgeProcess& bridge) {
    ASSERT_TRUE(bridge.Says("forwarding to the trace service")) << bridge.Log();
  }
  // A monitor to which all traces come from now on.
  std::unique_ptr<Watcher> Watch(std::size_t traces) {
    auto watcher = std::make_unique<Watcher>(traces);
    QuordClient client(m_quord.SocketPath());
    EXPECT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    Request request;
    request.mutable_get_status();
    EXPECT_TRUE(WaitFor([&] { return client.Ask(request).status().monitors() > 0; }));
    return watcher;
  }

  QuordProcess m_quord;
};
