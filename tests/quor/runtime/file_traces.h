// The file that an application writes by itself: how it is told to.
#pragma once

#include "fake_service.h"
#include "support/file_traces.h"

// The application, once it takes its traces itself.
inline std::unique_ptr<SeenApp> AcceptWithFile(FakeService& service, const std::string& path,
                                               const std::string& options) {
  auto seen = service.Accept();
  EXPECT_NE(seen, nullptr);
  if (!seen) return nullptr;
  seen->SendSink(SinkKind::File, path, options);
  EXPECT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_answered;
  }));
  EXPECT_EQ(seen->m_taker, RingTaker::Application);
  return seen;
}
