// A connection for which the system has no descriptor or no thread: it fails with a reason, and the
// program goes on.
#include <sys/stat.h>
#include <unistd.h>

#include <asio/error.hpp>
#include <atomic>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "live_fixture.h"
#include "quor/client/trace_config.h"
#include "quor/protocol/keys.h"
#include "support/system_lacks.h"

namespace {

class LackTest : public LiveTest {
 protected:
  // Both kinds of clients try. The reasons, one a line.
  std::string Refused() {
    std::string monitor, configuration;
    EXPECT_FALSE(TraceThread_i::ConnectToTraceService("", m_names, &monitor));
    EXPECT_FALSE(trace_Config_i::Create("", &configuration));
    return monitor + "\n" + configuration + "\n";
  }
  // A sanitizer that meets a class for the first time needs descriptors itself.
  void MeetAllClasses() {
    m_service.StopListening();
    EXPECT_EQ(Times(Refused(), "no trace service runs here"), 2U);
    m_service.Listen();
    const std::system_error lack(EMFILE, asio::system_category());
    EXPECT_NE(lack.code().message(), "");
  }
  static std::size_t Times(const std::string& text, const std::string& part) {
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++times;
    return times;
  }
  // Now the system has enough again.
  void ExpectToConnect() {
    Connect();
    EXPECT_TRUE(m_thread);
  }
};

TEST_F(LackTest, WithoutDescriptorsItFailsWithThatReason) {
  MeetAllClasses();
  const int next = dup(0);
  close(next);
  for (int spare = 0; spare <= 3; ++spare) {
    const SoftLimit limit(RLIMIT_NOFILE, static_cast<rlim_t>(next + spare));
    const std::string why = Refused();
    EXPECT_EQ(Times(why, "Too many open files"), 2U) << spare << " " << why;
  }
  ExpectToConnect();
}

TEST_F(LackTest, WithoutAThreadItFailsWithThatReason) {
  {
    const NoThreads none;
    const std::string why = Refused();
    EXPECT_EQ(Times(why, "Resource temporarily unavailable"), 2U) << why;
  }
  ExpectToConnect();
}

// The name of another machine is resolved by a thread of its own. The first file that the link's
// thread reads is a pipe, so that the lack begins when that thread runs.
TEST_F(LackTest, WithoutAThreadToResolveANameItFailsWithThatReason) {
  const TempDir home;
  const std::string keys = home.File("keys"), authority = keys + "/ca.crt";
  ASSERT_TRUE(InitKeys(home.File("issuer"), OwnNames(), nullptr));
  ASSERT_TRUE(IssueKeys(home.File("issuer"), "someone", quor::wire::ROLE_MONITOR, keys, nullptr));
  const std::string certificate = ReadAll(authority);
  ASSERT_EQ(unlink(authority.c_str()), 0);
  ASSERT_EQ(mkfifo(authority.c_str(), 0600), 0);
  setenv("QUOR_KEYS", keys.c_str(), 1);
  std::atomic<bool> done = false;
  const TraceThread_i* const thread = WhileServed(
      [&] {
        auto* const connected =
            TraceThread_i::ConnectToTraceService("127.0.0.1:1", m_names, &m_why);
        done = true;
        return connected;
      },
      [&] {
        std::ofstream pipe(authority);
        const NoThreads none;
        pipe << certificate << std::flush;
        pipe.close();
        EXPECT_TRUE(Eventually([&done] { return done.load(); }));
      });
  unsetenv("QUOR_KEYS");
  EXPECT_FALSE(thread);
  EXPECT_NE(m_why.find("Resource temporarily unavailable"), m_why.npos) << m_why;
}

}  // namespace
