// A real service and real programs, in a folder of their own.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "apps/trc/run_trc.h"
#include "quor/client/trace_config.h"
#include "quor/client/trace_thread.h"
#include "support/temp_dir.h"

template <class Condition>
bool Eventually(Condition&& condition, std::chrono::seconds patience = std::chrono::seconds(20)) {
  const auto until = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= until) return false;
    sched_yield();
  }
  return true;
}

class LiveProgramsTest : public testing::Test {
 protected:
  LiveProgramsTest() {
    setenv("XDG_RUNTIME_DIR", m_dir.Path().c_str(), 1);
    setenv("XDG_STATE_HOME", m_dir.File("state").c_str(), 1);
    setenv("HOME", m_dir.Path().c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
    unsetenv("QUOR_SOCKET");
  }
  ~LiveProgramsTest() override { StopService(SIGTERM); }

  void StartService(const std::vector<std::string>& arguments = {}) {
    const std::size_t before = Log().size();
    m_service = SpawnQuord(arguments, "--foreground");
    ASSERT_TRUE(Eventually([&] { return Log().find("ready on", before) != std::string::npos; }))
        << Log();
  }
  // Runs another command of quord to its end.
  int RunQuord(const std::vector<std::string>& arguments) {
    int status = 0;
    waitpid(SpawnQuord(arguments, nullptr), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  std::string Log() const { return ReadIfThere(m_dir.File("quord.log")); }
  // "127.0.0.1:PORT" of a service that was started with --listen 127.0.0.1:0.
  std::string Address() const {
    const std::string log = Log(), words = "listening on ";
    const std::size_t at = log.rfind(words) + words.size();
    return log.substr(at, log.find(' ', at) - at);
  }
  // Its exit status; 1000 + signal if a signal ended it.
  int StopService(int signal) {
    if (m_service <= 0) return -1;
    kill(m_service, signal);
    int status = 0;
    waitpid(m_service, &status, 0);
    m_service = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  // The pid of the process that listens on the local socket; 0 if there is none.
  pid_t ServicePid() const {
    const int end = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_dir.File("quor/quord.sock").copy(address.sun_path, sizeof address.sun_path - 1);
    ucred peer{};
    socklen_t size = sizeof peer;
    if (connect(end, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
      getsockopt(end, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    close(end);
    return peer.pid;
  }
  // The number before `word` in "N traced, M lost" and the like.
  static std::uint64_t Reported(const std::string& words, const std::string& word) {
    const std::size_t at = words.find(" " + word);
    if (at == words.npos) return ~0ull;
    const std::size_t begin = words.find_last_of(" \n", at - 1);
    return std::stoull(words.substr(begin == words.npos ? 0 : begin + 1));
  }
  bool IsHere(const std::string& app) {
    const TrcRun run = RunTrc({"show", app});
    return run.status == 0 && run.out.find("Net/Connect") != run.out.npos;
  }
  // All that the service keeps on the disk.
  std::map<std::string, std::string> State() const {
    std::map<std::string, std::string> state;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_dir.File("state")))
      if (entry.is_regular_file()) state[entry.path().string()] = ReadAll(entry.path().string());
    return state;
  }

  TempDir m_dir;
  pid_t m_service = -1;

 private:
  pid_t SpawnQuord(const std::vector<std::string>& arguments, const char* first) const {
    // Before the fork: an exception in the child would run the other tests there, too.
    const char* const named = getenv("QUORD");
    std::string program = named ? named : "QUORD is not set";
    const pid_t pid = fork();
    if (pid != 0) return pid;
    const int log = open(m_dir.File("quord.log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    unsetenv("JOURNAL_STREAM");
    std::string option = first ? first : "";
    std::vector<std::string> words = arguments;
    std::vector<char*> argv = {program.data()};
    if (first) argv.push_back(option.data());
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
};
