// Answers the requests of a configuration for a machine of a cluster, as the machine's own service
// would.
//
// Shape    What runs there is asked of the machine's publisher. What is submitted is stored under a
//          key first, and only if nobody has changed the key since this desk read it: two editors
//          cannot overwrite each other unseen. Then the publisher is asked to take it. Also while
//          the machine is away it is stored, and the answer says so.
// Owner    Borrows the engine.
// Errors   In the response, in words for a person. A permission that is refused shows in the engine
//          as silence: OnRefused gives the words for it.
// Threads  Answer from one thread, where it waits for the engine. OnRefused from any.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "quor/cluster/cluster.pb.h"
#include "quor/cluster/wanted.h"
#include "quor/engine/engine.h"

class SettingsDesk {
 public:
  static constexpr std::size_t kAppsMax = 4096;

  // `who`: what other editors are told of this one.
  SettingsDesk(Engine& engine, std::string machine, std::string who,
               std::chrono::milliseconds deadline = std::chrono::seconds(2))
      : m_engine(engine),
        m_machine(std::move(machine)),
        m_who(std::move(who)),
        m_deadline(deadline) {}

  // ListApps, OpenApp, CloseApp, GetApp, Submit, Keep and ForgetApp. Others are bad requests.
  quor::wire::Response Answer(const quor::wire::Request& request);
  void OnRefused(const std::string& what);

 private:
  struct Seen {
    quor::wire::App app;
    std::uint64_t revision = 0;
  };
  bool AskMachine(const quor::wire::Request& request, quor::wire::Response& response);
  bool AskMachine(const quor::cluster::QuestionMessage& question, quor::wire::Response& response);
  bool Read(const std::string& app, bool opens, quor::wire::Response& response);
  bool Submit(const quor::wire::Submit& submit, quor::wire::Response& response);
  bool Store(const quor::wire::Submit& submit, Seen& seen, std::vector<std::uint8_t>& value,
             quor::wire::Response& response);
  bool FailChanged(const std::string& app, const std::string& who, quor::wire::Response& response);
  // The words that fit a failure of the engine.
  std::string Reason(const std::string& why);
  bool Fail(quor::wire::Response& response, const std::string& text,
            quor::wire::ErrorCode code = quor::wire::ERROR_BAD_REQUEST);

  Engine& m_engine;
  const std::string m_machine, m_who;
  const std::chrono::milliseconds m_deadline;
  std::map<std::string, Seen> m_seen;
  std::mutex m_mutex;
  std::string m_refused;  // guarded; since the request began
};
