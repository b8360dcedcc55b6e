// The listeners for other machines, with peers that connect.
#include "quor/listeners/tls_listener.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <asio/ip/tcp.hpp>

#include "quor/protocol/keys.h"
#include "support/temp_dir.h"

namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;

// While it lives this process gets no further descriptor for a peer. Not by a limit: a sanitizer
// needs descriptors for its own checks.
bool g_noAccept = false;

class NoDescriptors {
 public:
  NoDescriptors() { g_noAccept = true; }
  ~NoDescriptors() { g_noAccept = false; }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;
};

}  // namespace

extern "C" int accept(int listener, sockaddr* peer, socklen_t* bytes) {
  if (!g_noAccept) return static_cast<int>(syscall(SYS_accept4, listener, peer, bytes, 0));
  errno = EMFILE;
  return -1;
}

namespace {

class TlsListenerTest : public ::testing::Test {
 protected:
  static tcp::endpoint FreeEndpoint() {
    asio::io_context io;
    return tcp::acceptor(io, {asio::ip::make_address("127.0.0.1"), 0}).local_endpoint();
  }
  static std::string TextOf(const tcp::endpoint& at) {
    return at.address().to_string() + ":" + std::to_string(at.port());
  }
  // The listener closes connections that send nothing.
  static bool IsClosed(tcp::socket& peer) {
    char byte = 0;
    return recv(peer.native_handle(), &byte, 1, MSG_DONTWAIT) == 0;
  }

  TempDir m_folder;
  const std::string m_keys = m_folder.File("keys");
  asio::io_context m_io, m_outside;
  std::string m_why;
};

TEST_F(TlsListenerTest, TwoListenersWithoutDescriptorsWaitAndThenAcceptAgain) {
  ASSERT_TRUE(InitKeys(m_keys, OwnNames(), &m_why)) << m_why;
  TlsListener listener(m_io, 100ms, [](auto, const auto&, const auto&) {});
  const tcp::endpoint one = FreeEndpoint(), other = FreeEndpoint();
  ASSERT_TRUE(listener.Open({TextOf(one), TextOf(other)}, {m_keys}, &m_why)) << m_why;
  tcp::socket first(m_outside), second(m_outside);
  first.connect(one);
  second.connect(other);
  {
    const NoDescriptors none;
    listener.Start();
    m_io.run_for(450ms);
    m_io.restart();
    // Each listener tries every 100 ms. If the wait of one ended the wait of the other, there would
    // be thousands of tries.
    EXPECT_LT(m_io.run_for(450ms), 40u);
    EXPECT_FALSE(IsClosed(first));
    EXPECT_FALSE(IsClosed(second));
  }
  bool firstGone = false, secondGone = false;
  const auto end = std::chrono::steady_clock::now() + 20s;
  while (!(firstGone && secondGone) && std::chrono::steady_clock::now() < end) {
    m_io.restart();
    m_io.run_for(10ms);
    firstGone = firstGone || IsClosed(first);
    secondGone = secondGone || IsClosed(second);
  }
  EXPECT_TRUE(firstGone);
  EXPECT_TRUE(secondGone);
}

}  // namespace
