// The doors for other machines, with peers that want in.
#include "quor/service/tls_door.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <asio/ip/tcp.hpp>

#include "quor/protocol/keys.h"
#include "support/temp_dir.h"

namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;

// While it lives this process gets no further descriptor.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &m_before);
    const int next = fcntl(STDERR_FILENO, F_DUPFD, 0);
    close(next);
    rlimit now = m_before;
    now.rlim_cur = static_cast<rlim_t>(next);
    setrlimit(RLIMIT_NOFILE, &now);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;

 private:
  rlimit m_before{};
};

class TlsDoorTest : public ::testing::Test {
 protected:
  static tcp::endpoint FreeEndpoint() {
    asio::io_context io;
    return tcp::acceptor(io, {asio::ip::make_address("127.0.0.1"), 0}).local_endpoint();
  }
  static std::string TextOf(const tcp::endpoint& at) {
    return at.address().to_string() + ":" + std::to_string(at.port());
  }
  // The door ends what it has let in and what says nothing.
  static bool IsSentAway(tcp::socket& peer) {
    char byte = 0;
    return recv(peer.native_handle(), &byte, 1, MSG_DONTWAIT) == 0;
  }

  TempDir m_folder;
  const std::string m_keys = m_folder.File("keys");
  asio::io_context m_io, m_outside;
  std::string m_why;
};

TEST_F(TlsDoorTest, TwoListenersWithoutDescriptorsWaitAndThenAcceptAgain) {
  ASSERT_TRUE(InitKeys(m_keys, OwnNames(), &m_why)) << m_why;
  TlsDoor door(m_io, 100ms, [](auto, const auto&, const auto&) {});
  const tcp::endpoint one = FreeEndpoint(), other = FreeEndpoint();
  ASSERT_TRUE(door.Open({TextOf(one), TextOf(other)}, m_keys, &m_why)) << m_why;
  tcp::socket first(m_outside), second(m_outside);
  first.connect(one);
  second.connect(other);
  {
    const NoDescriptors none;
    door.Start();
    m_io.run_for(450ms);
    m_io.restart();
    // For each listener a try every 100 ms, and the end of each wait. When a wait of one ended that
    // of the other, there would be thousands.
    EXPECT_LT(m_io.run_for(450ms), 40u);
    EXPECT_FALSE(IsSentAway(first));
    EXPECT_FALSE(IsSentAway(second));
  }
  bool firstGone = false, secondGone = false;
  const auto end = std::chrono::steady_clock::now() + 20s;
  while (!(firstGone && secondGone) && std::chrono::steady_clock::now() < end) {
    m_io.restart();
    m_io.run_for(10ms);
    firstGone = firstGone || IsSentAway(first);
    secondGone = secondGone || IsSentAway(second);
  }
  EXPECT_TRUE(firstGone);
  EXPECT_TRUE(secondGone);
}

}  // namespace
