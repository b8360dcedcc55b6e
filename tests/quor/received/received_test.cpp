// Descriptors that a peer sends, and whose end it may put off.
#include "quor/received/received.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "support/lingering_socket.h"
#include "support/wait_for.h"

namespace {

using Clock = std::chrono::steady_clock;

class ReceivedTest : public testing::Test {
 protected:
  ReceivedTest() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends), 0); }
  ~ReceivedTest() override {
    for (const int end : m_ends) close(end);
  }
  // Sends a byte and the descriptor.
  void Send(int descriptor) const {
    char byte = 'x';
    iovec part{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const head = CMSG_FIRSTHDR(&message);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
    ASSERT_EQ(sendmsg(m_ends[0], &message, 0), 1);
  }
  int m_ends[2] = {-1, -1};
};

TEST_F(ReceivedTest, ASocketThatLingersHoldsUpNeitherTheReaderNorTheOneWhoEnds) {
  for (const bool reads : {true, false}) {
    LingeringSocket lingering;
    Send(lingering.Number());
    lingering.Forget();
    const auto began = Clock::now();
    char byte = 0;
    if (reads) {
      EXPECT_EQ(ReceiveAll(m_ends[1], &byte, 1, nullptr), 1);
    } else {
      EndPeer(m_ends[1]);
    }
    EXPECT_LT(Clock::now() - began, std::chrono::seconds(20));
  }
}

TEST_F(ReceivedTest, WhoWantsDescriptorsGetsThemAndOthersAreClosed) {
  int pipes[2];
  ASSERT_EQ(pipe2(pipes, O_CLOEXEC), 0);
  char byte = 0;
  Send(pipes[1]);
  std::vector<int> got;
  EXPECT_EQ(ReceiveAll(m_ends[1], &byte, 1, &got), 1);
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(write(got[0], "w", 1), 1);
  EXPECT_EQ(read(pipes[0], &byte, 1), 1);
  close(got[0]);
  EXPECT_EQ(ReceiveAll(m_ends[1], &byte, 1, &got), -1);
  EXPECT_EQ(errno, EAGAIN);
  Send(pipes[1]);
  close(pipes[1]);
  EXPECT_EQ(ReceiveAll(m_ends[1], &byte, 1, nullptr), 1);
  ASSERT_EQ(fcntl(pipes[0], F_SETFL, O_NONBLOCK), 0);
  EXPECT_TRUE(WaitFor([&] { return read(pipes[0], &byte, 1) == 0; })) << "nobody holds its end";
  close(pipes[0]);
  shutdown(m_ends[0], SHUT_WR);
  EXPECT_EQ(ReceiveAll(m_ends[1], &byte, 1, nullptr), 0);
}

TEST_F(ReceivedTest, OnlyAFileInMemoryIsOne) {
  const int unnamed = memfd_create("segment", MFD_CLOEXEC);
  EXPECT_TRUE(IsInSharedMemory(unnamed));
  const std::string name = "/dev/shm/received-" + std::to_string(getpid());
  const int named = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  EXPECT_TRUE(IsInSharedMemory(named));
  unlink(name.c_str());
  const int program = open("/proc/self/exe", O_RDONLY | O_CLOEXEC);
  EXPECT_FALSE(IsInSharedMemory(program));
  const int folder = open("/dev/shm", O_RDONLY | O_CLOEXEC);
  EXPECT_FALSE(IsInSharedMemory(folder));
  EXPECT_FALSE(IsInSharedMemory(m_ends[0]));
  EXPECT_FALSE(IsInSharedMemory(-1));
  for (const int one : {unnamed, named, program, folder}) close(one);
}

}  // namespace
