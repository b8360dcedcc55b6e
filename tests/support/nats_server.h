// A real server of an engine: started, stopped, killed and started again over the same files.
//
// Shape    It listens at 127.0.0.1 on a port of its own, which stays over restarts. Its files and
// its
//          log are in a folder of its own below `folder`.
// Errors   Start gives the reason in words; also when the program is not installed.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

class NatsServer {
 public:
  // A port that nobody uses now.
  static int FreePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof at;
    const bool bound = bind(socket, reinterpret_cast<sockaddr*>(&at), size) == 0 &&
                       getsockname(socket, reinterpret_cast<sockaddr*>(&at), &size) == 0;
    close(socket);
    return bound ? ntohs(at.sin_port) : 0;
  }

  // `more` is added to its configuration.
  explicit NatsServer(const std::string& folder, std::string name = "n1", std::string more = "")
      : m_folder(folder + "/" + name), m_name(std::move(name)), m_more(std::move(more)) {
    std::filesystem::create_directories(m_folder);
  }
  ~NatsServer() { Kill(); }
  NatsServer(const NatsServer&) = delete;

  // Empty: it runs and says that it is ready.
  std::string Start() {
    const bool first = !m_port;
    std::string why = "it was not tried";
    for (int tries = first ? 5 : 1; tries-- && !why.empty();) {
      if (first) m_port = FreePort();
      why = StartOnce();
    }
    return why;
  }

  void Kill() { End(SIGKILL); }
  void Terminate() { End(SIGTERM); }
  void Stop() { kill(m_pid, SIGSTOP); }
  void Continue() { kill(m_pid, SIGCONT); }
  bool Runs() const { return m_pid > 0; }

  void SetMore(std::string more) { m_more = std::move(more); }
  int Port() const { return m_port; }
  const std::string& Name() const { return m_name; }
  std::string Address() const { return "127.0.0.1:" + std::to_string(m_port); }
  std::string Log() const {
    std::stringstream text;
    text << std::ifstream(m_folder + "/log").rdbuf();
    return text.str();
  }

 private:
  std::string StartOnce() {
    const char* const named = std::getenv("NATS_SERVER");
    const std::string program = named ? named : "/usr/sbin/nats-server";
    if (access(program.c_str(), X_OK) != 0)
      return program + " is not there: install the package nats-server, or name it in NATS_SERVER";
    std::ofstream(m_folder + "/conf")
        << "listen: \"127.0.0.1:" << m_port << "\"\nserver_name: " << m_name
        << "\njetstream { store_dir: \"" << m_folder << "/store\" }\n"
        << m_more << "\n";
    m_pid = Spawn(program);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      if (Log().find("Server is ready") != std::string::npos) return "";
      if (waitpid(m_pid, nullptr, WNOHANG) == m_pid) {
        m_pid = 0;
        return "it ended: " + Log();
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    Kill();
    return "it is not ready after 20 s: " + Log();
  }

  pid_t Spawn(const std::string& program) const {
    const std::string conf = m_folder + "/conf", log = m_folder + "/log";
    const int out = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const pid_t parent = getpid(), child = fork();
    if (child == 0) {
      // It must not outlive the test.
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (getppid() != parent) _exit(1);
      dup2(out, 1);
      dup2(out, 2);
      execl(program.c_str(), program.c_str(), "-c", conf.c_str(), nullptr);
      _exit(127);
    }
    close(out);
    return child;
  }

  void End(int signal) {
    if (m_pid <= 0) return;
    kill(m_pid, signal);
    kill(m_pid, SIGCONT);
    waitpid(m_pid, nullptr, 0);
    m_pid = 0;
  }

  const std::string m_folder, m_name;
  std::string m_more;
  int m_port = 0;
  pid_t m_pid = 0;
};
