// The lock and the socket of a service, with two that want them.
#include "quor/listeners/local_listener.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include "quor/link/link_socket.h"
#include "support/temp_dir.h"

namespace {

class LocalListenerTest : public ::testing::Test {
 protected:
  // In a thread of its own, because it may wait.
  std::future<bool> OpenInThread(LocalListener& listener, std::string* why) {
    return std::async(std::launch::async,
                      [this, &listener, why] { return listener.Open(m_socket, why); });
  }
  bool Answers() const {
    const int peer = ConnectToService(m_socket.c_str());
    if (peer >= 0) close(peer);
    return peer >= 0;
  }
  TempDir m_folder;
  const std::string m_socket = m_folder.File("quord.sock");
  std::string m_why;
};

TEST_F(LocalListenerTest, ASecondServiceIsRefusedAndTheFirstStaysAtItsSocket) {
  LocalListener first, second;
  ASSERT_TRUE(first.Open(m_socket, &m_why)) << m_why;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(second.Open(m_socket, &m_why));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
  EXPECT_EQ(m_why, "quord is already running here (process " + std::to_string(getpid()) + ")");
  EXPECT_TRUE(Answers());
}

TEST_F(LocalListenerTest, OfTwoThatStartAtOnceOneServes) {
  for (int round = 0; round < 5; ++round) {
    LocalListener one, other;
    std::string whyOne, whyOther;
    auto first = OpenInThread(one, &whyOne), second = OpenInThread(other, &whyOther);
    EXPECT_NE(first.get(), second.get()) << whyOne << whyOther;
    EXPECT_TRUE(Answers());
  }
}

TEST_F(LocalListenerTest, AServiceThatEndsIsWaitedFor) {
  LocalListener first, second;
  ASSERT_TRUE(first.Open(m_socket, &m_why)) << m_why;
  first.StopListening();
  EXPECT_FALSE(Answers());
  EXPECT_EQ(ServicePid(m_socket), getpid());
  auto opened = OpenInThread(second, &m_why);
  // Longer than a running one is waited for.
  EXPECT_EQ(opened.wait_for(std::chrono::milliseconds(1500)), std::future_status::timeout);
  first.Close();
  EXPECT_TRUE(opened.get()) << m_why;
  EXPECT_TRUE(Answers());
  EXPECT_EQ(ReadAll(m_folder.File("quord.lock")), std::to_string(getpid()) + "\n");
}

TEST_F(LocalListenerTest, WhoeverOnlyLooksAtTheLockKeepsNoServiceOut) {
  LocalListener listener;
  const int look = open(m_folder.File("quord.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(look, LOCK_SH | LOCK_NB), 0);
  auto opened = OpenInThread(listener, &m_why);
  EXPECT_EQ(opened.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  close(look);
  EXPECT_TRUE(opened.get()) << m_why;
}

TEST_F(LocalListenerTest, SocketAndLockAreForTheirOwnerAlone) {
  const mode_t before = umask(0);
  LocalListener listener;
  EXPECT_TRUE(listener.Open(m_socket, &m_why)) << m_why;
  umask(before);
  for (const std::string& path : {m_socket, m_folder.File("quord.lock")}) {
    struct stat status {};
    ASSERT_EQ(lstat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u) << path;
  }
}

}  // namespace
