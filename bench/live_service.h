// A real service and a real application beside this benchmark, in a folder of their own.
//
// Owner    Ends what it started.
// Errors   Ends the benchmark with a message.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

class LiveService {
 public:
  enum class Listens { Here, OnLoopback };  // OnLoopback: also for other machines, with keys

  explicit LiveService(Listens listens = Listens::Here)
      : m_folder("/tmp/bench-live-" + std::to_string(getpid())) {
    std::filesystem::create_directory(m_folder);
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all);
    const std::string socket = m_folder + "/quord.sock";
    setenv("QUOR_SOCKET", socket.c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    std::vector<std::string> words = {"--foreground", "--log-level", "error"};
    if (listens == Listens::OnLoopback) {
      m_address = "127.0.0.1:" + std::to_string(FreePort());
      words.insert(words.end(), {"--listen", m_address});
      MakeKeys();
    }
    m_service = Start("quord", words, -1);
    if (!m_clientKeys.empty()) setenv("QUOR_KEYS", m_clientKeys.c_str(), 1);
    for (int i = 0; i < 500 && !std::filesystem::exists(socket); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (!std::filesystem::exists(socket)) Fail("quord does not start");
  }
  ~LiveService() {
    End(m_application, SIGKILL);
    End(m_service, SIGTERM);
    std::filesystem::remove_all(m_folder);
  }
  LiveService(const LiveService&) = delete;
  LiveService& operator=(const LiveService&) = delete;

  // For other machines.
  const std::string& Address() const { return m_address; }

  void StartTracing(int perSecond) {
    int ends[2];
    if (pipe(ends) != 0) Fail("no pipe");
    m_application = Start(
        "trc", {"emit", "--app", "load", "--rate", std::to_string(perSecond), "--text-bytes", "80"},
        ends[1]);
    close(ends[1]);
    m_words = ends[0];
  }
  // How many traces the application has made in total, including its own losses.
  std::uint64_t StopTracing() {
    End(m_application, SIGINT);
    char text[64] = {};
    if (read(m_words, text, sizeof text - 1) <= 0) Fail("the application says nothing");
    close(m_words);
    return std::strtoull(text, nullptr, 10);
  }

 private:
  [[noreturn]] static void Fail(const char* why) {
    std::fprintf(stderr, "bench: %s\n", why);
    _exit(2);
  }
  static pid_t Start(const char* name, std::vector<std::string> arguments, int out) {
    arguments.insert(arguments.begin(),
                     std::filesystem::read_symlink("/proc/self/exe").replace_filename(name));
    const pid_t pid = fork();
    if (pid != 0) return pid;
    signal(SIGINT, SIG_DFL);  // a job in the background ignores it, and so would this program
    if (out >= 0) dup2(out, STDOUT_FILENO);
    std::vector<char*> argv;
    for (std::string& word : arguments) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    Fail("the programs must be built as well: ./dev build");
  }
  // The service's keys, and among them those of a client that may configure.
  void MakeKeys() {
    const std::string keys = m_folder + "/keys";
    setenv("QUOR_KEYS", keys.c_str(), 1);
    const std::string client = m_folder + "/client";
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"keys", "init"},
          {"keys", "issue", "bench", "--role", "configure", "--out", client}}) {
      const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
      int status = 0;
      waitpid(Start("quord", words, nowhere), &status, 0);
      close(nowhere);
      if (status != 0) Fail("no keys can be made");
    }
    m_clientKeys = client;
  }
  static int FreePort() {
    const int end = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(end, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(end, reinterpret_cast<sockaddr*>(&address), &size) != 0)
      Fail("no free port");
    close(end);
    return ntohs(address.sin_port);
  }
  static void End(pid_t& pid, int signal) {
    if (pid <= 0) return;
    kill(pid, signal);
    waitpid(pid, nullptr, 0);
    pid = 0;
  }

  const std::string m_folder;
  std::string m_address, m_clientKeys;
  pid_t m_service = 0, m_application = 0;
  int m_words = -1;
};
