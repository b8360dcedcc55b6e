// What a .tcf file says, as a value: to show it, to compare it, and to put it in force as a whole.
//
// Shape    An application stands once. A later group of the same name replaces its traces, and its
//          sink if it names one, as on a machine that takes the groups one by one. Only traces that
//          are on are there.
// Threads  Pure, but for what asks handles: interface thread.
#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config/tcf/tcf_read.h"
#include "quor/client/trace_config.h"

struct TcfSink {
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
  bool operator==(const TcfSink&) const = default;
};
struct TcfTrace {
  std::string component, category;
  unsigned settings = 0;
  bool operator==(const TcfTrace&) const = default;
};
struct TcfApp {
  std::string name;
  std::optional<TcfSink> sink;  // none: stays as it is
  std::vector<TcfTrace> traces;
  bool operator==(const TcfApp&) const = default;
};
using TcfConfig = std::vector<TcfApp>;

// Collects what ReadTcf reads.
class TcfCollector final : public TcfHandler {
 public:
  bool OnApp(const std::string& name) override;
  bool OnSink(unsigned char type, const std::string& name, const std::string& options) override;
  bool OnTrace(const std::string& component, const std::string& category,
               unsigned short settings) override;
  void OnAppEnd() override;
  const TcfConfig& Config() const { return m_config; }

 private:
  TcfConfig m_config;
  std::map<std::string, std::size_t> m_apps;  // their places
  std::size_t m_current = 0;
  std::map<std::pair<std::string, std::string>, std::size_t> m_traces;  // of the current one
};

// As a file of these applications would read, without the bits that no file keeps.
TcfConfig TcfConfigOf(const std::list<QuorPtr<trace_App_i>>& apps);
// Tells it to somebody who takes the lines of a file. False: the handler has stopped it.
bool ReplayTcf(const TcfConfig& config, TcfHandler& handler);
// The traces that the application does not have.
std::vector<TcfTrace> TracesUnknownTo(const trace_App_i& app, const TcfApp& config);

// The lines of `before` that `after` lacks, behind "- ", and the reverse, behind "+ "; above those
// of an application that both have its own line, behind "  ". Neither the order of applications nor
// that of traces counts. Empty: both say the same.
std::vector<std::string> TcfDifference(const TcfConfig& before, const TcfConfig& after);
