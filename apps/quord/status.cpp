// quord status: asks the local service for its state, applications and problems.
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "commands.h"
#include "question.h"
#include "quor/listeners/local_listener.h"

namespace {

using std::chrono::steady_clock;
constexpr std::chrono::milliseconds kRateTime{500};  // in which traces are counted

struct State {
  std::string socket, machine;
  pid_t pid = 0;
  std::vector<std::string> apps, troubles;
  bool hasMore = false;  // false: a service of an earlier version
  quor::wire::Status more;
  std::uint64_t tracesPerSecond = 0;
};

std::string TimeText(std::int64_t seconds) {
  const std::time_t time = seconds;
  tm parts{};
  gmtime_r(&time, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

bool AskForMore(Question& question, State& state) {
  quor::wire::Request request;
  quor::wire::Response first, second;
  request.mutable_get_status();
  if (!question.Ask(request, &first) || !first.has_status()) return false;
  const auto began = steady_clock::now();
  std::this_thread::sleep_for(kRateTime);
  if (!question.Ask(request, &second) || !second.has_status()) return false;
  const std::chrono::duration<double> time = steady_clock::now() - began;
  state.more = second.status();
  const auto traces = static_cast<double>(second.status().traces() - first.status().traces());
  state.tracesPerSecond = static_cast<std::uint64_t>(std::llround(traces / time.count()));
  return true;
}

bool AskAll(Question& question, State& state) {
  quor::wire::Request request;
  quor::wire::Response response;
  request.mutable_list_apps();
  if (!question.Reach(state.socket) || !question.Ask(request, &response)) return false;
  state.machine = question.Welcome().machine();
  state.pid = ServicePid(state.socket);
  state.troubles.assign(question.Welcome().troubles().begin(), question.Welcome().troubles().end());
  state.apps.assign(response.app_names().begin(), response.app_names().end());
  state.hasMore = AskForMore(question, state);
  // Another user's lock file cannot be read.
  if (state.pid == 0) state.pid = static_cast<pid_t>(state.more.pid());
  return true;
}

nlohmann::json TakersOf(const quor::wire::Status& more) {
  auto takers = nlohmann::json::array();
  for (const auto& line : more.takers())
    takers.push_back({{"who", line.who()},
                      {"connected", line.connected()},
                      {"secondsAway", line.away()},
                      {"frames", line.frames()},
                      {"keptTraces", line.traces()},
                      {"keptBytes", line.bytes()},
                      {"dropped", line.dropped()}});
  return takers;
}

nlohmann::json JsonOf(const State& state, bool runs) {
  nlohmann::json answer = {{"running", runs}, {"socket", state.socket}};
  if (!runs) return answer;
  answer.update({{"machine", state.machine},
                 {"pid", state.pid},
                 {"apps", state.apps},
                 {"troubles", state.troubles}});
  if (!state.hasMore) return answer;
  const quor::wire::Status& more = state.more;
  auto dates = nlohmann::json::array();
  for (const auto& line : more.certificates())
    dates.push_back({{"what", line.what()}, {"ends", TimeText(line.ends())}});
  answer.update(
      {{"version", more.version()},
       {"since", TimeText(static_cast<std::int64_t>(more.since()))},
       {"config", more.config()},
       {"listening", std::vector<std::string>(more.listening().begin(), more.listening().end())},
       {"instances", more.instances()},
       {"clients", more.clients() - 1},  // without this one
       {"monitors", more.monitors()},
       {"traces", more.traces()},
       {"tracesPerSecond", state.tracesPerSecond},
       {"lost", more.lost()},
       {"dropped", more.dropped()},
       {"withheld", more.withheld()},
       {"takers", TakersOf(more)},
       {"certificates", dates}});
  return answer;
}

// Names and addresses are those of others: a terminal would obey their control characters, which
// are the bytes below a blank, DEL, and U+0080 to U+009F.
std::string Shown(std::string text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < ' ' || byte == 0x7F) text[at] = '?';
    if (byte != 0xC2 || at + 1 == text.size()) continue;
    const auto next = static_cast<unsigned char>(text[at + 1]);
    if (next >= 0x80 && next < 0xA0) text.replace(at, 2, "?");
  }
  return text;
}

void PrintTakers(const quor::wire::Status& more) {
  for (const auto& line : more.takers()) {
    const std::string away =
        line.connected() ? "" : ", away for " + std::to_string(line.away()) + " s";
    std::printf(
        "  %s confirms what it gets: %llu frames so far, %llu traces kept (%.1f MiB), %llu "
        "dropped%s\n",
        Shown(line.who()).c_str(), static_cast<unsigned long long>(line.frames()),
        static_cast<unsigned long long>(line.traces()),
        static_cast<double>(line.bytes()) / (1 << 20),
        static_cast<unsigned long long>(line.dropped()), away.c_str());
  }
}

void PrintMore(const State& state) {
  const quor::wire::Status& more = state.more;
  std::printf("  version %s, since %s\n", more.version().c_str(),
              TimeText(static_cast<std::int64_t>(more.since())).c_str());
  if (!more.config().empty()) std::printf("  configuration file %s\n", more.config().c_str());
  for (const std::string& address : more.listening())
    std::printf("  listening on %s\n", address.c_str());
  std::printf("  %u running applications, %u monitors, %llu traces (%llu a second)\n",
              more.instances(), more.monitors(), static_cast<unsigned long long>(more.traces()),
              static_cast<unsigned long long>(state.tracesPerSecond));
  std::printf("  %llu lost by applications, %llu dropped for slow or paused monitors\n",
              static_cast<unsigned long long>(more.lost()),
              static_cast<unsigned long long>(more.dropped()));
  if (more.withheld() > 0)
    std::printf("  %llu withheld by filters of monitors\n",
                static_cast<unsigned long long>(more.withheld()));
  PrintTakers(more);
  for (const auto& line : more.certificates())
    if (line.ends() != 0)
      std::printf("  %s %s %s\n", Shown(line.what()).c_str(),
                  line.ends() < std::time(nullptr) ? "has expired at" : "is valid until",
                  TimeText(line.ends()).c_str());
}

void Print(const State& state) {
  // The service of the machine tells it only its administrators.
  const std::string process =
      state.pid > 0 ? " (process " + std::to_string(state.pid) + ")" : std::string();
  std::printf("quord runs on %s%s, socket %s\n", Shown(state.machine).c_str(), process.c_str(),
              state.socket.c_str());
  if (state.hasMore) PrintMore(state);
  for (const std::string& trouble : state.troubles)
    std::printf("  trouble: %s\n", Shown(trouble).c_str());
  for (const std::string& app : state.apps) std::printf("  %s\n", Shown(app).c_str());
  if (state.apps.empty()) std::printf("  no applications\n");
}

}  // namespace

int Status(const StatusCommand& command) {
  State state;
  state.socket = SocketPathIn(command.socketFolder);
  Question question;
  const bool runs = AskAll(question, state);
  if (command.json) {
    const std::string text =
        JsonOf(state, runs).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
    std::printf("%s\n", text.c_str());
  } else if (runs) {
    Print(state);
  } else {
    std::printf("quord does not run at %s\n", state.socket.c_str());
  }
  return runs ? kExitGood : kExitNotRunning;
}
