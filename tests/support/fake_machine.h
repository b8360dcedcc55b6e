// A machine's configuration service without a process: applications with traces, and the handles of
// quor/client on them.
//
// Shape    A FakeMachine outlives its handles. Its log has a line per call that a real handle would
//          send to the machine: "connect", "list", "open orders", "look orders", "submit orders",
//          "refresh orders". What was submitted is in force as long as an instance runs or a handle
//          is open, as on a real machine: tests/quor/config runs the contract for both.
// Owner    Handles are counted references, like the real ones; m_handles counts those that live.
// Threads  One.
#pragma once

#include <string>

#include "quor/client/trace_config.h"
#include "support/fake_machine_handles.h"
#include "support/fake_machine_state.h"

class FakeMachine : public FakeMachineState {
 public:
  // What the document asks in place of the static functions of the client's classes.
  trace_Config_i* Connect(const std::string& host, std::string* why) {
    Ask("connect " + host);
    m_host = host;
    if (m_away && why) *why = "no trace service there";
    return m_away ? nullptr : new FakeConfig(*this, host);
  }
  trace_App_i* Open(const std::string& app, std::string* why) {
    Ask("open " + app);
    const bool refused = m_away || RefusesOpen();
    if (refused && why) *why = "no trace service there";
    return refused ? nullptr : new FakeMachineApp(*this, app, true);
  }
  trace_App_i* Look(const std::string& app, std::string* why) {
    Ask("look " + app);
    if (m_away && why) *why = "no trace service there";
    return m_away ? nullptr : new FakeMachineApp(*this, app, false);
  }
};
