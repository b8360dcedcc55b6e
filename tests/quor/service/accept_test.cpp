// The service accepts local clients by one chain of waits, also when it had to make its place anew
// while there was no descriptor to be had.
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "quor/service/service.h"
#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

std::atomic<bool> g_noDescriptors{false};
std::atomic<unsigned> g_asked{0}, g_accepted{0};

}  // namespace

// In the place of the C library's: only the service's own listener calls it.
extern "C" int accept4(int socket, sockaddr* address, socklen_t* length, int flags) {
  ++g_asked;
  if (g_noDescriptors) {
    errno = EMFILE;
    return -1;
  }
  const long taken = syscall(SYS_accept4, socket, address, length, flags);
  if (taken >= 0) ++g_accepted;
  return static_cast<int>(taken);
}

namespace {

class ServiceAccept : public testing::Test {
 protected:
  ServiceAccept() {
    ServiceOptions options;
    options.socketPath = m_folder.File("run/quord.sock");
    options.stateFolder = m_folder.File("state");
    m_service = std::make_unique<Service>(options);
    std::string why;
    EXPECT_TRUE(m_service->Open(&why)) << why;
    m_thread = std::thread([this] { m_service->Run(); });
    g_asked = 0;
    g_accepted = 0;
  }
  ~ServiceAccept() override {
    g_noDescriptors = false;
    kill(getpid(), SIGTERM);
    m_thread.join();
  }
  // A client that has connected; -1: there is none.
  int Connect() {
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un at{};
    at.sun_family = AF_UNIX;
    std::strncpy(at.sun_path, m_folder.File("run/quord.sock").c_str(), sizeof at.sun_path - 1);
    if (connect(client, reinterpret_cast<const sockaddr*>(&at), sizeof at) == 0) return client;
    close(client);
    return -1;
  }

  TempDir m_folder;
  std::unique_ptr<Service> m_service;
  std::thread m_thread;
};

TEST_F(ServiceAccept, AsksOnceForEachClientAlsoAfterItsPlaceWasTakenAgainWithoutDescriptors) {
  g_noDescriptors = true;
  const int early = Connect();
  ASSERT_GE(early, 0);
  ASSERT_TRUE(WaitFor([] { return g_asked > 0; }));
  std::filesystem::remove_all(m_folder.File("run"));
  int client = -1;
  ASSERT_TRUE(WaitFor([&] { return (client = Connect()) >= 0; })) << "no place again";
  // By now a chain of waits that began at the old place would have asked too, because its pause is
  // over.
  const unsigned asked = g_asked;
  ASSERT_TRUE(WaitFor([asked] { return g_asked >= asked + 4; }));
  g_noDescriptors = false;
  ASSERT_TRUE(WaitFor([] { return g_accepted == 1; }));
  g_asked = 0;
  constexpr unsigned kClients = 5;
  for (unsigned i = 0; i < kClients; ++i) {
    const int next = Connect();
    ASSERT_GE(next, 0);
    EXPECT_TRUE(WaitFor([i] { return g_accepted == i + 2; }));
    close(next);
  }
  EXPECT_LE(g_asked, kClients + 1) << "one more may be under way from before";
  close(client);
  close(early);
}

}  // namespace
