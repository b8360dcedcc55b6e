// Puts a .tcf file in force on a machine, application by application.
//
// Shape    Each APP: line opens a handle and switches all its traces off, so that the file's lines
//          say everything that is on. The sink stays where no line names one. A trace that the
//          application does not have is passed over: a file may be older than the application.
// Owner    Borrows the machine, and the list of handles that it appends to.
// Errors   Ends when a handle cannot be made. A machine that was waited for in vain is not asked
//          for the next one: each application would wait as long. What was submitted stays in
//          force.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <list>
#include <set>
#include <string>

#include "config/tcf/tcf_read.h"
#include "quor/client/trace_config.h"

class TcfApplier final : public TcfHandler {
 public:
  // A handle on the application; null when the machine cannot be reached.
  using Open = std::function<QuorPtr<trace_App_i>(const std::string& app)>;

  TcfApplier(const trace_Config_i& machine, Open open, std::list<QuorPtr<trace_App_i>>& apps)
      : m_machine(machine), m_open(std::move(open)), m_apps(apps) {}

  bool OnApp(const std::string& name) override;
  bool OnSink(unsigned char type, const std::string& name, const std::string& options) override;
  bool OnTrace(const std::string& component, const std::string& category,
               unsigned short settings) override;
  void OnAppEnd() override;

  // The applications with a Submit that failed.
  const std::set<std::string>& NotTaken() const { return m_notTaken; }

 private:
  const trace_Config_i& m_machine;
  const Open m_open;
  std::list<QuorPtr<trace_App_i>>& m_apps;
  QuorPtr<trace_App_i> m_current;
  std::set<std::string> m_notTaken;
};
