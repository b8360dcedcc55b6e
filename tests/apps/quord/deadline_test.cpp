// A client that stops reading: it is cut off after the write deadline, and nobody else is held up.
#include <quor/quor.hpp>

#include "quor/service/service.h"
#include "quord_client.h"

namespace {

using std::chrono::steady_clock;

QUOR_POINT(connect_point, "Net", "Connect");

class Deadline : public ::testing::Test {
 protected:
  // Traces until it is killed, a megabyte now and then.
  static int Flood(TracedChild&) {
    quor_application("flood");
    const std::string text(1000, 'x');
    for (;;) {
      for (int i = 0; i < 1000; ++i)
        quor_trace(&connect_point, QUOR_INFO, nullptr, 0, text.data(), text.size());
      poll(nullptr, 0, 5);
    }
  }
  // Both send heartbeats; the first reads nothing.
  void Stall(QuordClient& stalled, QuordClient& other, const std::function<bool()>& isCut) {
    ASSERT_TRUE(WaitFor(
        [&] {
          stalled.Beat();
          other.Beat();
          other.Pump();
          return isCut();
        },
        30000))
        << quord.Log();
  }
  QuordProcess quord;
};

TEST_F(Deadline, OfTheProgramIsTenSeconds) {
  EXPECT_EQ(ServiceOptions().connectionLimits.writeDeadline, std::chrono::seconds(10));
  quord.Start();
  QuordClient stalled, other;
  ASSERT_TRUE(stalled.Monitor(quord.SocketPath()));
  ASSERT_TRUE(other.Monitor(quord.SocketPath()));
  other.keepTraces = false;
  const auto begin = steady_clock::now();
  TracedChild app(Flood);
  Stall(stalled, other, [&] {
    return quord.Log().find("has disconnected: the peer has read nothing for 10.0 s") !=
           std::string::npos;
  });
  EXPECT_GE(steady_clock::now() - begin, std::chrono::seconds(9));
  EXPECT_FALSE(other.ended);
  const std::uint64_t before = other.delivered;
  EXPECT_TRUE(WaitFor([&] { return other.Pump(), other.delivered > before; }));
}

TEST_F(Deadline, IsTheServicesToSet) {
  ServiceOptions options;
  options.socketPath = quord.SocketPath();
  options.stateFolder = quord.Folder().File("state");
  options.tls.keysFolder = quord.KeysFolder();
  options.connectionLimits.writeDeadline = std::chrono::milliseconds(300);
  TracedChild service([&options](TracedChild&) {
    Service own(options);
    std::string why;
    if (!own.Open(&why)) return 1;
    own.Run();
    return 0;
  });
  QuordClient stalled, other;
  ASSERT_TRUE(stalled.Monitor(quord.SocketPath()));
  ASSERT_TRUE(other.Monitor(quord.SocketPath()));
  other.keepTraces = false;
  const auto begin = steady_clock::now();
  TracedChild app(Flood);
  Stall(stalled, other, [&] {
    // The bytes in the kernel's buffer can still be read before the end is seen.
    const ssize_t sent = send(stalled.Socket(), "", 0, MSG_NOSIGNAL | MSG_DONTWAIT);
    pollfd end{stalled.Socket(), 0, 0};
    return (sent < 0 && errno == EPIPE) || (poll(&end, 1, 0) == 1 && (end.revents & POLLHUP) != 0);
  });
  EXPECT_LT(steady_clock::now() - begin, ServiceOptions().connectionLimits.writeDeadline);
  EXPECT_FALSE(other.ended);
  kill(service.Pid(), SIGTERM);
  EXPECT_EQ(service.Wait(), 0);
}

}  // namespace
