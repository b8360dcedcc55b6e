// Where trc config takes configurations from: .tcf files, and machines that it only looks at.
//
// Errors   A status other than kExitGood, after a message on standard error.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "config/tcf/tcf_config.h"

using AppHandles = std::list<QuorPtr<trace_App_i>>;

int ReadConfigFile(const std::string& path, TcfConfig* config);
// The reason and the place why this file cannot be read; "" when it can.
std::string WhyBadConfigFile(const std::string& path);

// Looks at applications of a machine; opens no handles there.
class MachineLook {
 public:
  explicit MachineLook(std::string machine) : m_machine(std::move(machine)) {}

  int Connect();
  // These, or all that are registered when there are none.
  int Take(const std::vector<std::string>& names, AppHandles* apps) const;
  // The application, or null when the machine does not know it; `status` then has a failure if that
  // is the reason.
  QuorPtr<trace_App_i> Find(const std::string& name, int* status) const;

 private:
  const std::string m_machine;
  std::list<std::string> m_registered;
};

// "1 trace", "2 traces".
std::string Counted(std::size_t count, const std::string& what);
