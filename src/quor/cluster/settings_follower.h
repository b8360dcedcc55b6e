// Brings what is wanted of a machine's applications from the cluster to the machine's own service,
// and answers what is asked about the machine.
//
// Shape    Of a key that changes only what is new in it is submitted: somebody at the machine may
//          have changed the rest meanwhile. A setting of a trace that the application does not have
//          yet waits for it. The application is held open, so that it stays in force.
//
//          After a start a value is taken again only if its state does not say that it was taken.
// Owner    Borrows the engine. Stop before the engine ends, and destroy this after it, because it
//          calls Answer.
// Errors   What cannot be done is told in the state of the key, which everybody may read, and once
//          in the log. A value that is malformed or of another machine changes nothing.
// Threads  Step from one thread, where it waits. Answer from any, also while Step runs.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "quor/cluster/wanted.h"
#include "quor/engine/engine.h"

class SettingsFollower {
 public:
  static constexpr std::size_t kAppsMax = 4096;
  // Asks the machine's own service. False and a reason: refused, or no answer; then `response` has
  // the error, if there is one.
  using Local =
      std::function<bool(const quor::wire::Request&, quor::wire::Response*, std::string* why)>;
  using Say = std::function<void(const std::string& line)>;

  // `pause`: between two looks for traces that are waited for.
  SettingsFollower(Engine& engine, std::string machine, Local local, Say say,
                   std::chrono::milliseconds pause = std::chrono::seconds(2))
      : m_engine(engine),
        m_machine(std::move(machine)),
        m_local(std::move(local)),
        m_say(std::move(say)),
        m_pause(pause) {}

  // Begins to follow and to answer.
  bool Start(std::string* why);
  // Takes what has changed, waiting for it so long at most, and looks for traces that were waited
  // for.
  void Step(std::chrono::milliseconds deadline);
  // From any thread, after Start: a Step that waits returns soon.
  void Wake();
  // After the last Step. Questions are still answered.
  void Stop();
  // `mayChange`: it was asked where changes are.
  std::vector<std::uint8_t> Answer(Bytes question, bool mayChange);

 private:
  struct Entry {
    Wanted wanted;
    std::uint64_t revision = 0;
    std::set<Wanted::Trace> waiting;  // of wanted.settings
    bool held = false, sinkWaits = false, isTold = false;
    std::string trouble;
  };
  void BeginAnew();
  void Remove(const std::string& key);
  void LookAgain();
  void TakeValue(const EngineMessage& message);
  bool TakeNow(const quor::cluster::QuestionMessage& question, std::string* why);
  bool WasTaken(const std::string& app, std::uint64_t revision) const;
  bool Take(const std::string& key, Wanted wanted, std::uint64_t revision, bool wasTaken,
            std::string* why);
  void Apply(Entry& entry);
  bool Ask(const quor::wire::Request& request, quor::wire::Response& response, Entry& entry) const;
  bool ReadApp(Entry& entry, quor::wire::Response& response) const;
  void TellState(const Entry& entry);
  void SayOnce(const std::string& line);

  Engine& m_engine;
  const std::string m_machine;
  const Local m_local;
  const Say m_say;
  const std::chrono::milliseconds m_pause;
  std::mutex m_mutex;
  std::unique_ptr<EngineReader> m_reader;  // guarded but for Step: only Start and Stop change it
  std::map<std::string, Entry> m_entries;  // guarded, by key
  // Of the thread of Step.
  std::set<std::string> m_said;
  std::chrono::steady_clock::time_point m_looked;
};
