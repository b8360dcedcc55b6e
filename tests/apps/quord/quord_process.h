// A real quord for tests, with a socket, state and keys of its own, and clients that connect to it.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "support/remove_segments.h"
#include "support/temp_dir.h"
#include "support/traced_child.h"

class QuordProcess {
 public:
  // Nothing is started yet. From now on the test's environment names this socket.
  QuordProcess() {
    setenv("QUOR_SOCKET", SocketPath().c_str(), 1);
    setenv("QUOR_KEYS", KeysFolder().c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
  }
  ~QuordProcess() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      WaitForExit(m_pid);
    }
    KillHolder();
    RemoveSegments(m_folder.Path());
  }
  QuordProcess(const QuordProcess&) = delete;
  QuordProcess& operator=(const QuordProcess&) = delete;

  std::string SocketPath() const { return m_folder.File("quord.sock"); }
  std::string KeysFolder() const { return m_folder.File("keys"); }
  // What it reads without --config.
  std::string UsualConfig() const { return m_folder.File("usual.conf"); }
  const TempDir& Folder() const { return m_folder; }
  pid_t Pid() const { return m_pid; }
  std::string Log() const { return ReadIfThere(m_folder.File("log")); }
  bool Says(const std::string& words, int milliseconds = 20000) const {
    return WaitFor([&] { return Log().find(words) != std::string::npos; }, milliseconds);
  }

  // Starts it and waits until it accepts connections.
  void Start(std::vector<std::string> arguments = {}, const std::string& wrapper = {}) {
    arguments.insert(arguments.begin(), {"--foreground", "--log-level", "debug"});
    const std::size_t before = Log().size();
    m_pid = Spawn(arguments, wrapper);
    ASSERT_TRUE(WaitFor([&] { return Log().find("ready on", before) != std::string::npos; }))
        << Log();
  }
  // Runs any other command of it; its output goes to the log.
  pid_t Spawn(const std::vector<std::string>& arguments, const std::string& wrapper = {}) const {
    std::vector<std::string> words;
    for (std::size_t at = 0; at < wrapper.size();) {
      const std::size_t end = std::min(wrapper.find(' ', at), wrapper.size());
      words.push_back(wrapper.substr(at, end - at));
      at = end + 1;
    }
    const char* const program = getenv("QUORD");
    words.emplace_back(program ? program : "no-program-named-by-QUORD");
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings = Environment();
    const std::vector<char*> argv = Pointers(words), environment = Pointers(settings);
    const std::string log = m_folder.File("log");
    const pid_t pid = fork();
    if (pid != 0) return pid;
    // Another thread of the test may hold the allocator's lock: nothing is allocated here.
    const int to = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(to, STDOUT_FILENO);
    dup2(to, STDERR_FILENO);
    execvpe(argv[0], argv.data(), environment.data());
    _exit(127);
  }
  int Run(const std::vector<std::string>& arguments) const { return WaitForExit(Spawn(arguments)); }
  void Kill() {
    kill(m_pid, SIGKILL);
    EXPECT_EQ(WaitForExit(m_pid), 1000 + SIGKILL);
    m_pid = 0;
  }
  int Stop() {
    kill(m_pid, SIGTERM);
    return Wait();
  }
  int Wait() {
    const int status = WaitForExit(m_pid);
    m_pid = 0;
    return status;
  }
  // The port of the newest listener.
  std::string Port() const {
    const std::string log = Log();
    const std::size_t at = log.rfind("listening on ");
    const std::size_t colon = log.find(':', at);
    return log.substr(colon + 1, log.find(' ', colon) - colon - 1);
  }

 private:
  // Kills a service that a test has left in the background: the lock file has its pid.
  void KillHolder() const {
    const int lock = open(m_folder.File("quord.lock").c_str(), O_RDONLY | O_CLOEXEC);
    char number[16] = {};
    if (lock >= 0 && flock(lock, LOCK_SH | LOCK_NB) != 0 && read(lock, number, 15) > 0 &&
        atoi(number) > 1)
      kill(atoi(number), SIGKILL);
    if (lock >= 0) close(lock);
  }
  std::vector<std::string> Environment() const {
    std::vector<std::string> settings = {"QUOR_SOCKET=" + SocketPath(), "QUOR_KEYS=" + KeysFolder(),
                                         "QUOR_CONFIG=" + UsualConfig()};
    for (char** entry = environ; *entry; ++entry) {
      const std::string setting = *entry;
      const std::string name = setting.substr(0, setting.find('='));
      if (name != "QUOR_SOCKET" && name != "QUOR_KEYS" && name != "QUOR_CONFIG" &&
          name != "JOURNAL_STREAM")
        settings.push_back(setting);
    }
    return settings;
  }
  static std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
  }
  TempDir m_folder;
  pid_t m_pid = 0;
};
