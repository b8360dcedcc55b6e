// A real quor-demo for tests.
#pragma once

#include <string>
#include <vector>

#include "apps/quord/quord_process.h"

class DemoProcess {
 public:
  explicit DemoProcess(std::vector<std::string> arguments) {
    // Before the fork: an exception in the child would run the other tests there, too.
    const char* const program = getenv("QUOR_DEMO");
    arguments.insert(arguments.begin(), program ? program : "QUOR_DEMO is not set");
    m_pid = fork();
    if (m_pid != 0) return;
    const int out =
        open(m_folder.File("out").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const int err =
        open(m_folder.File("err").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    std::vector<char*> argv;
    for (std::string& word : arguments) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  ~DemoProcess() {
    if (m_pid <= 0) return;
    kill(m_pid, SIGKILL);
    WaitForExit(m_pid);
  }
  DemoProcess(const DemoProcess&) = delete;
  DemoProcess& operator=(const DemoProcess&) = delete;

  int Wait() {
    const int status = WaitForExit(m_pid, 60000);
    if (status != -1) m_pid = 0;
    return status;
  }
  void Signal(int number) { kill(m_pid, number); }
  std::string Out() const { return ReadIfThere(m_folder.File("out")); }
  std::string Err() const { return ReadIfThere(m_folder.File("err")); }
  // The number in its last line, "quor-demo: 12 traces, 0 lost". REQUIRES: it has ended
  // successfully.
  unsigned long Traces() const {
    const std::string err = Err();
    const std::size_t line = err.rfind("quor-demo: ");
    return line == std::string::npos ? 0 : std::stoul(err.substr(line + 11));
  }

 private:
  TempDir m_folder;
  pid_t m_pid = 0;
};
