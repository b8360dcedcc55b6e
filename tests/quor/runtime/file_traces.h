// Makes an application write a file itself.
#pragma once

#include "fake_service.h"
#include "support/file_traces.h"

// The application, as soon as it takes its traces itself.
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
