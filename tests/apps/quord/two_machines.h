// Simulates two machines: each with a network and a host name of its own, and a virtual cable
// between them. Processes, files and unix sockets are shared.
//
// Needs `ip` (iproute2) and the right to make network namespaces: as root, or as any user if the
// kernel allows users to have namespaces.
#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <array>
#include <fstream>

#include "quord_process.h"

class TwoMachines {
 public:
  TwoMachines() {
    Hold(m_holders[0], "near-host", geteuid() == 0 ? "" : "/proc/self/ns/user");
    if (m_holders[0] > 0) Hold(m_holders[1], "far-host", UserOf(m_holders[0]));
    const std::string far = std::to_string(m_holders[1]);
    m_made = m_holders[1] > 0 &&
             Do(0, "ip link add cable type veth peer name cable netns " + far) &&
             Do(0, "ip address add 10.77.0.1/24 dev cable") &&
             Do(1, "ip address add 10.77.0.2/24 dev cable") && Do(0, "ip link set lo up") &&
             Do(1, "ip link set lo up") && Do(0, "ip link set cable up") &&
             Do(1, "ip link set cable up");
  }
  ~TwoMachines() {
    for (const pid_t holder : m_holders) {
      if (holder <= 0) continue;
      kill(holder, SIGKILL);
      WaitForExit(holder);
    }
  }
  TwoMachines(const TwoMachines&) = delete;
  TwoMachines& operator=(const TwoMachines&) = delete;

  bool AreMade() const { return m_made; }
  const std::string& Why() const { return m_why; }
  // The words before a command that is to run there. 0: near, 1: far.
  std::string Wrapper(int machine) const {
    return "nsenter -t " + std::to_string(m_holders[machine]) +
           (geteuid() == 0 ? "" : " -U --preserve-credentials") + " -n -u";
  }
  // From now on this process, which has one thread, is on that machine.
  bool Enter(int machine) const {
    const std::string folder = "/proc/" + std::to_string(m_holders[machine]) + "/ns/";
    std::array<int, 3> spaces{};
    const char* const names[] = {"user", "net", "uts"};
    const std::size_t first = geteuid() == 0 ? 1 : 0;
    for (std::size_t i = first; i < 3; ++i)
      spaces[i] = open((folder + names[i]).c_str(), O_RDONLY | O_CLOEXEC);
    bool entered = true;
    for (std::size_t i = first; i < 3; ++i) entered = setns(spaces[i], 0) == 0 && entered;
    return entered;
  }
  bool Cut() { return Do(1, "ip link set cable down"); }
  bool Mend() { return Do(1, "ip link set cable up"); }

 private:
  std::string UserOf(pid_t holder) const {
    return geteuid() == 0 ? "" : "/proc/" + std::to_string(holder) + "/ns/user";
  }
  // Starts a process that only keeps the namespace alive. `user`: the user namespace that owns it;
  // empty for root.
  void Hold(pid_t& holder, const std::string& host, const std::string& user) {
    int reported[2];
    ASSERT_EQ(pipe2(reported, O_CLOEXEC), 0);
    const uid_t uid = geteuid();
    const pid_t pid = fork();
    if (pid == 0) {
      const bool made = Become(host, user, uid);
      [[maybe_unused]] const ssize_t written = write(reported[1], made ? "y" : "n", 1);
      for (;;) pause();
    }
    char answer = 'n';
    close(reported[1]);
    [[maybe_unused]] const ssize_t got = read(reported[0], &answer, 1);
    close(reported[0]);
    holder = pid;
    if (answer == 'y') return;
    kill(pid, SIGKILL);
    WaitForExit(pid);
    holder = 0;
    m_why = "no network namespace can be made: run it as root, or let users have namespaces";
  }
  static bool Become(const std::string& host, const std::string& user, uid_t uid) {
    if (user == "/proc/self/ns/user") {
      if (unshare(CLONE_NEWUSER) != 0) return false;
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1";
    } else if (!user.empty() && setns(open(user.c_str(), O_RDONLY | O_CLOEXEC), 0) != 0) {
      return false;
    }
    return unshare(CLONE_NEWNET | CLONE_NEWUTS) == 0 && sethostname(host.data(), host.size()) == 0;
  }
  bool Do(int machine, const std::string& command) {
    if (system((Wrapper(machine) + " " + command).c_str()) == 0) return true;
    m_why = "this failed: " + command;
    return false;
  }

  std::array<pid_t, 2> m_holders{};
  std::string m_why;
  bool m_made = false;
};
