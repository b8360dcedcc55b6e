// When a forwarder is not needed any more.
#include "quor/forwarding/forwarder.h"

#include <gtest/gtest.h>

#include "quor/protocol/machine.h"

namespace {

TEST(Forwarder, OneThatOwesTheCountsOfAnEarlierServicesSourceIsNotIdle) {
  asio::io_context io;
  std::string why;
  const std::optional<Machine> machine = ParseMachine("orders1:7447", &why);
  ASSERT_TRUE(machine) << why;
  // Without keys it never connects.
  const auto forwarder = std::make_shared<Forwarder>(io, *machine, "/no-such-folder", "here");
  forwarder->Start();
  const auto remember = [&](std::uint8_t instance, std::uint64_t forwarded) {
    Source source;
    source.instance[0] = instance;
    source.serial = 10;
    source.forwarded = forwarded;
    forwarder->Traces().EndSource(forwarder->Traces().AddSource(std::move(source)));
  };
  EXPECT_TRUE(forwarder->IsIdle());
  remember(1, 10);
  EXPECT_TRUE(forwarder->IsIdle()) << "all of it has arrived";
  remember(2, 4);
  EXPECT_FALSE(forwarder->IsIdle());
  forwarder->Stop();
}

}  // namespace
