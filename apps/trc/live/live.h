// The commands of trc that talk to a running service, and the one that is traced itself.
//
// Errors   Each returns its exit status: 1 when the answer is no or traces were lost.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "commands/dump.h"
#include "quor/settings/settings_text.h"

// Which traces are taken, and when to stop, apart from SIGINT. --until stops, too.
struct LiveLimits {
  TraceOptions traces;
  std::string atSource;  // the filter text that the service asks; empty: it sends all
  std::optional<std::uint64_t> seconds;
};

struct TailOptions {
  std::string machine;
  DumpFormat format = DumpFormat::Text;
  bool coloured = false;          // severities of the text
  ColourProgramPtr colours = {};  // null: lines have no colours
  LiveLimits limits;
};
int RunTail(const TailOptions& options);

struct CaptureOptions {
  std::string machine, out;
  LiveLimits limits;
  std::uint64_t maxMegabytes = 0;  // of one file; 0: no limit
  std::uint64_t maxFiles = 0;      // full files that are kept; 0: all
};
int RunCapture(const CaptureOptions& options);

struct AppsOptions {
  std::string machine;
  std::string account;  // only its applications; empty: all
  bool json = false;
};
int RunApps(const AppsOptions& options);

struct ShowOptions {
  std::string machine, app;
  bool json = false;
};
int RunShow(const ShowOptions& options);

struct SetOptions {
  std::string machine, app;
  std::string target;  // "COMPONENT" or "COMPONENT/CATEGORY"; empty: all
  unsigned settings = 0;
  SettingsText rules;    // instead of these two
  bool persist = false;  // for all later instances; `rules` are set then
  std::string doubt;     // printed when there is no such machine or application
};
int RunSet(const SetOptions& options);

struct ForgetOptions {
  std::string machine, app;
};
int RunForget(const ForgetOptions& options);

struct SinkChange {
  std::string machine, app;
  std::string server, file;  // one of them is empty
  std::string options;
};
int RunSink(const SinkChange& command);

struct EmitOptions {
  std::string app;
  std::vector<std::string> components = {"Net", "Db"};
  std::uint64_t rate = 0;   // traces a second; 0: as fast as possible
  std::uint64_t count = 0;  // 0: until SIGINT
  std::uint64_t textBytes = 40;
  std::uint64_t threads = 1;
  bool blocks = false;
  std::uint64_t seed = 1;
};
int RunEmit(const EmitOptions& options);
