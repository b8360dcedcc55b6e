// A real quor-bridge for tests that runs until it is ended, and requests to it.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>

#include <string>
#include <utility>
#include <vector>

#include "apps/quord/quord_process.h"

class BridgeProcess {
 public:
  explicit BridgeProcess(std::vector<std::string> words = {"--listen", "127.0.0.1:0"},
                         const char* verb = "otlp-in") {
    const char* const program = getenv("QUOR_BRIDGE");
    words.insert(words.begin(), {program ? program : "no-program", verb});
    const std::string log = m_folder.File("log");
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    m_pid = fork();
    if (m_pid != 0) return;
    const int to = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(to, STDOUT_FILENO);
    dup2(to, STDERR_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }
  ~BridgeProcess() {
    if (m_pid > 0) End(SIGKILL);
  }
  BridgeProcess(const BridgeProcess&) = delete;
  BridgeProcess& operator=(const BridgeProcess&) = delete;

  // The exit status, or 1000 + the signal that ended it.
  int End(int number) {
    kill(m_pid, number);
    return Wait();
  }
  int Wait() { return WaitForExit(std::exchange(m_pid, 0)); }
  pid_t Pid() const { return m_pid; }
  std::string Log() const { return ReadIfThere(m_folder.File("log")); }
  bool Says(const std::string& words) const {
    return WaitFor([&] { return Log().find(words) != std::string::npos; });
  }
  // How often it has said that.
  unsigned Times(const std::string& words) const {
    const std::string log = Log();
    unsigned times = 0;
    for (std::size_t at = 0; (at = log.find(words, at)) != log.npos; ++at) ++times;
    return times;
  }
  int Port() const {
    if (!Says("ready\n")) return 0;
    const std::string log = Log();
    const std::size_t at = log.find(':', log.find("listening on "));
    return std::stoi(log.substr(at + 1));
  }

 private:
  TempDir m_folder;
  pid_t m_pid = 0;
};

// A connection of a program that exports; it may send several requests.
class Exporter {
 public:
  explicit Exporter(const BridgeProcess& bridge)
      : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(bridge.Port()));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval patience{20, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    EXPECT_EQ(connect(m_socket, reinterpret_cast<const sockaddr*>(&to), sizeof to), 0);
  }
  ~Exporter() { close(m_socket); }
  Exporter(const Exporter&) = delete;
  Exporter& operator=(const Exporter&) = delete;

  // The head of the answer; "" when the connection ends.
  std::string Post(const std::string& path, const std::string& body) {
    return Ask("POST " + path + " HTTP/1.1\r\nHost: x\r\nContent-Type: application/x-protobuf\r\n" +
               "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  }
  std::string Ask(const std::string& request) { return Send(request) ? Answer() : std::string(); }
  bool Send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t now = send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (now <= 0) return false;
      sent += static_cast<std::size_t>(now);
    }
    return true;
  }
  // What has come, at least a head. Bodies of answers are short, and come with their head.
  std::string Answer() {
    std::string got;
    char piece[4096];
    while (got.find("\r\n\r\n") == got.npos) {
      const ssize_t now = recv(m_socket, piece, sizeof piece, 0);
      if (now <= 0) return {};
      got.append(piece, static_cast<std::size_t>(now));
    }
    return got;
  }

 private:
  const int m_socket;
};
