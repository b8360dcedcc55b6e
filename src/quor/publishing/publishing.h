// Publishes the traces of this machine's service on an engine, until it is told to end.
//
// Shape    The service and the engine may be away, at the start too: both are called again. What is
//          not acknowledged stays with the service. The state file makes the next run go on where
//          this one ended, also after a kill.
// Owner    Makes and ends the engine.
// Errors   Open returns false and a reason. Later ones are in the log, once each.
// Threads  Run on the thread that made it; the service's client, the engine and the settings have
//          threads of their own, from which it posts.
#pragma once

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <condition_variable>
#include <set>

#include "quor/client/taker/taker.h"
#include "quor/publishing/publish_state.h"
#include "quor/publishing/settings_side.h"

struct PublishingOptions {
  std::string stream;   // of the engine
  std::string machine;  // this one's name
  std::string stateFile;
  std::chrono::milliseconds redial{1000}, save{1000}, counts{60'000};
  std::size_t queueBytes = 64u << 20;  // of messages; above, the service waits
};

class Publishing final : private Taker::User, private EngineUser {
 public:
  using MakeEngine = std::function<std::unique_ptr<Engine>(EngineUser& user, std::string* why)>;

  Publishing(PublishingOptions options, MakeEngine makeEngine);
  ~Publishing();

  bool Open(std::string* why);
  // Until SIGTERM or SIGINT. SIGUSR1 logs the counts.
  void Run();

 private:
  using Time = Publisher::Time;
  // The client's thread.
  void OnStream(const std::string& id) override;
  void OnFrame(const TakenFrame& frame) override;
  void OnGap(std::uint64_t traces) override;
  void OnBroken(const std::string& why) override;
  // The engine's threads.
  void OnAck(std::uint64_t token, const EngineAck& ack) override;
  void OnRefused(const std::string& what) override;
  void OnDown(const std::string& why) override;
  void OnUp(const std::string& server) override;

  template <class Work>
  void Post(Work work);
  void Turn();
  void Dial(Time now);
  void BeginStream(const std::string& id);
  void Confirm(Time now);
  void Save(Time now);
  void TellTrouble();
  void TellBack();
  void TellCounts();
  void SayOnce(const std::string& line);
  void AwaitSignal();
  void End();

  const PublishingOptions m_options;
  const MakeEngine m_makeEngine;
  asio::io_context m_io{1};
  asio::steady_timer m_timer{m_io};
  asio::signal_set m_signals{m_io};
  PublishStateFile m_file;
  PublishState m_state;
  std::unique_ptr<SettingsSide> m_settings;  // ends after the engine
  std::unique_ptr<Engine> m_engine;
  std::unique_ptr<Publisher> m_publisher;
  std::unique_ptr<Taker> m_taker;
  std::string m_stream;  // of the service, from the moment that it agreed
  bool m_isDialled = false, m_isServiceAway = false, m_isEngineAway = false,
       m_isTroubleTold = false;
  bool m_isDirty = false, m_isSaveFailing = false;
  Time m_nextDial{}, m_nextSave{}, m_nextCounts{};
  std::uint64_t m_gaps = 0, m_confirmed = 0, m_told = 0;
  std::set<std::string> m_said, m_downs;

  std::mutex m_mutex;
  std::condition_variable m_hasRoom;
  std::size_t m_coming = 0, m_queued = 0;  // guarded; bytes posted, and in the publisher
  bool m_ends = false;                     // guarded
};
