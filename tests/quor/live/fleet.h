// The machines that a command configures: this one, and two that are reached over TLS. All run
// here, each with a socket and a state of its own.
//
// Shape    Machine 0 is "localhost", 1 and 2 are "127.0.0.1:PORT" in the order of their names,
// which
//          come before "localhost".
#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "apps/quord/quord_process.h"
#include "apps/trc/run_trc.h"

class Fleet {
 public:
  // From now on the test's environment names this machine's socket and keys that may configure.
  void Start() {
    ASSERT_EQ(m_far[0].Run({"keys", "init"}), 0) << m_far[0].Log();
    for (const std::string role : {"configure", "monitor"})
      ASSERT_EQ(m_far[0].Run({"keys", "issue", role, "--role", role, "--out", Keys(role)}), 0);
    for (QuordProcess& far : m_far) Listen(far, "0");
    m_here.Start();
    if (Address(m_far[1]) < Address(m_far[0])) std::swap(m_places[1], m_places[2]);
    setenv("QUOR_KEYS", Keys("configure").c_str(), 1);
  }
  // A service that was killed comes back under its name.
  void StartAgain(int machine) {
    machine == 0 ? m_here.Start() : Listen(Service(machine), Service(machine).Port());
  }
  QuordProcess& Service(int machine) { return *m_places[machine]; }
  std::string Name(int machine) { return machine == 0 ? "localhost" : Address(*m_places[machine]); }
  // Keys for a role, "configure" or "monitor".
  std::string Keys(const std::string& role) const { return m_far[0].Folder().File(role); }

  // An application with three traces of each component: Connect, Close and Request.
  TrcStart Emit(int machine, const std::string& app, const std::string& components = "Net,Db") {
    return {.arguments = {"emit", "--app", app, "--rate", "200", "--components", components},
            .environment = {"QUOR_SOCKET=" + Service(machine).SocketPath()}};
  }
  bool IsTraced(int machine, const std::string& app, std::size_t traces = 6) {
    return WaitFor([&] {
      const TrcRun run = RunTrc({"show", Name(machine), app});
      return run.status == 0 && LinesOf(run.out).size() == traces + 2;
    });
  }
  // Of an application of this machine, or of all machines.
  std::string Shown(int machine, const std::string& app) {
    return RunTrc({"show", Name(machine), app}).out;
  }
  std::string Shown() {
    std::string text;
    for (int machine = 0; machine < 3; ++machine)
      text += std::to_string(machine) + "\n" +
              RunTrc({"config", "show", "--machine", Name(machine)}).out;
    return text;
  }

 private:
  // Both have the same keys.
  void Listen(QuordProcess& far, const std::string& port) {
    far.Start({"--listen", "127.0.0.1:" + port}, "env QUOR_KEYS=" + m_far[0].KeysFolder());
  }
  static std::string Address(const QuordProcess& far) { return "127.0.0.1:" + far.Port(); }

  QuordProcess m_far[2];
  QuordProcess m_here;  // the last one that is made names its socket
  QuordProcess* m_places[3] = {&m_here, &m_far[0], &m_far[1]};
};
