// A service for tests: accepts one application after the other on a socket of its own and consumes
// on the test's own thread. And the traced children that it talks to.
#pragma once

#include "seen_app.h"
#include "support/remove_segments.h"

class FakeService {
 public:
  FakeService() {
    char pattern[] = "/tmp/quor-test-XXXXXX";
    m_folder = mkdtemp(pattern);
    setenv("QUOR_SOCKET", SocketPath().c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    Listen();
  }
  ~FakeService() {
    Stop();
    unsetenv("QUOR_RING_MIB");
    RemoveSegments(m_folder);
    std::filesystem::remove_all(m_folder);
  }
  std::string SocketPath() const { return m_folder + "/quord.sock"; }
  const std::string& Folder() const { return m_folder; }
  void Listen() {
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    SocketPath().copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_listener, 64), 0);
  }
  void Stop() {
    if (m_listener >= 0) close(m_listener);
    m_listener = -1;
    unlink(SocketPath().c_str());
  }

  // The next application that introduces itself; null when none does in time.
  std::unique_ptr<SeenApp> Accept(int milliseconds = 20000) {
    pollfd ready{m_listener, POLLIN, 0};
    if (poll(&ready, 1, milliseconds) != 1) return nullptr;
    const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    LinkDecoder decoder;
    LinkFrame frame;
    int descriptor = -1;
    for (;;) {
      pollfd readable{socket, POLLIN, 0};
      if (poll(&readable, 1, milliseconds) != 1) break;
      std::uint8_t bytes[4096];
      const LinkReceived got = ReceiveOnLink(socket, bytes, sizeof bytes);
      if (got.descriptorCount != 0) descriptor = got.descriptors[0];
      const std::uint8_t* from = bytes;
      if (got.ended) break;
      if (decoder.Feed(from, bytes + got.bytes, frame) != LinkDecoder::Result::Frame) continue;
      SegmentMap segment;
      const char* why = "";
      EXPECT_EQ(frame.type, LinkType::Hello);
      EXPECT_TRUE(segment.Open(descriptor, &why)) << why;
      return std::make_unique<SeenApp>(socket, std::move(segment), frame.hello);
    }
    close(socket);
    return nullptr;
  }

 private:
  std::string m_folder;
  int m_listener = -1;
};

// A traced application: `body` in a process of its own, with a pipe to the test for steps.
class Child {
 public:
  explicit Child(const std::function<int(Child&)>& body) {
    EXPECT_EQ(pipe(m_go), 0);
    EXPECT_EQ(pipe(m_told), 0);
    m_pid = fork();
    if (m_pid == 0) _exit(body(*this));
  }
  ~Child() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      Wait();
    }
    for (const int end : {m_go[0], m_go[1], m_told[0], m_told[1]}) close(end);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // In the child.
  void Tell(std::uint64_t number) { EXPECT_EQ(write(m_told[1], &number, sizeof number), 8); }
  void AwaitGo() {
    char byte;
    EXPECT_EQ(read(m_go[0], &byte, 1), 1);
  }
  // In the test.
  void Go() { EXPECT_EQ(write(m_go[1], "g", 1), 1); }
  std::uint64_t Told() {
    pollfd ready{m_told[0], POLLIN, 0};
    std::uint64_t number = ~std::uint64_t{0};
    if (poll(&ready, 1, 20000) != 1 || read(m_told[0], &number, sizeof number) != 8)
      ADD_FAILURE() << "the child told nothing";
    return number;
  }
  void Kill() { kill(m_pid, SIGKILL); }
  // The exit status, or 1000 + the signal.
  int Wait() {
    int status = 0;
    if (m_pid <= 0 || waitpid(m_pid, &status, 0) != m_pid) return -1;
    m_pid = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  pid_t Pid() const { return m_pid; }

 private:
  pid_t m_pid = 0;
  int m_go[2] = {-1, -1}, m_told[2] = {-1, -1};
};
