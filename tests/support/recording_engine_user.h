// An EngineUser that keeps what it hears.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "quor/engine/engine.h"

class RecordingEngineUser final : public EngineUser {
 public:
  void OnAck(std::uint64_t token, const EngineAck& ack) override {
    Note([&] { m_acks.emplace_back(token, ack); });
  }
  void OnRefused(const std::string& what) override {
    Note([&] { m_refused.push_back(what); });
  }
  void OnDown(const std::string& why) override {
    Note([&] { m_downs.push_back(why); });
  }
  void OnUp(const std::string& server) override {
    Note([&] { m_ups.push_back(server); });
  }

  std::vector<std::pair<std::uint64_t, EngineAck>> Acks() const {
    std::lock_guard lock(m_mutex);
    return m_acks;
  }
  // Those after the first `count`.
  std::vector<std::pair<std::uint64_t, EngineAck>> AcksFrom(std::size_t count) const {
    std::lock_guard lock(m_mutex);
    return {m_acks.begin() + std::ptrdiff_t(std::min(count, m_acks.size())), m_acks.end()};
  }
  std::vector<std::string> Refused() const {
    std::lock_guard lock(m_mutex);
    return m_refused;
  }
  std::vector<std::string> Downs() const {
    std::lock_guard lock(m_mutex);
    return m_downs;
  }
  std::vector<std::string> Ups() const {
    std::lock_guard lock(m_mutex);
    return m_ups;
  }

  // Waits until this holds; false: the time is over.
  template <class Test>
  bool Wait(Test test, std::chrono::milliseconds longest = std::chrono::seconds(20)) const {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!test()) {
      std::unique_lock lock(m_mutex);
      if (std::chrono::steady_clock::now() >= end) return false;
      m_heard.wait_for(lock, std::chrono::milliseconds(20));
    }
    return true;
  }

 private:
  template <class Work>
  void Note(Work work) {
    std::lock_guard lock(m_mutex);
    work();
    m_heard.notify_all();
  }

  mutable std::mutex m_mutex;
  mutable std::condition_variable m_heard;
  std::vector<std::pair<std::uint64_t, EngineAck>> m_acks;
  std::vector<std::string> m_refused, m_downs, m_ups;
};
