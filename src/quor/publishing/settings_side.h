// The settings of a cluster for this machine: follows them, and asks the machine's own service.
//
// Owner    Borrows the engine. Stop before the engine ends, and destroy this after it, because the
//          engine may still ask.
// Errors   Told by `say`, in words.
// Threads  A thread of its own, on which `say` is called, and threads of the engine.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

#include "quor/client/config_link.h"
#include "quor/cluster/settings_follower.h"

class SettingsSide {
 public:
  SettingsSide(Engine& engine, const std::string& machine, SettingsFollower::Say say);
  ~SettingsSide() { Stop(); }
  SettingsSide(const SettingsSide&) = delete;
  SettingsSide& operator=(const SettingsSide&) = delete;

  void Start();
  void Stop();

 private:
  void Work();
  bool AskLocal(const quor::wire::Request& request, quor::wire::Response* response,
                std::string* why);
  std::shared_ptr<ConfigLink> Link(ConfigLink::Clock::time_point until, std::string* why);

  const SettingsFollower::Say m_say;
  SettingsFollower m_follower;
  std::mutex m_mutex;  // m_link, m_isFollowing
  std::shared_ptr<ConfigLink> m_link;
  bool m_isFollowing = false;
  std::atomic<bool> m_ends{false};
  std::thread m_thread;
};
