// The service behind fake engines: one stream, buckets and those who answer. It lies as it is told.
//
// Shape    Faults are percents of the messages that are published or read, drawn from a seed. What
//          is published is stored, and acknowledged, by Deliver: nothing happens in between. So
//          without RunThread all is the same for a seed.
// Owner    The cluster outlives its engines.
// Threads  Any. The users are called in Deliver, without the lock.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "support/fake_stream.h"

struct FakeFaults {
  int lost = 0;            // it never comes, and no acknowledgement
  int noAck = 0;           // it is stored, and nobody says so
  int doubled = 0;         // it is stored twice, in spite of its id
  int late = 0;            // it is stored after messages that were sent later
  int otherStream = 0;     // it is not stored, and another stream acknowledges it
  int falseDuplicate = 0;  // it is not stored, and acknowledged as a duplicate
  int falling = 0;         // it is stored, and acknowledged with a sequence that is too low
  int readTwice = 0, readSwapped = 0, readLost = 0;  // by a reader
};

class FakeCluster {
 public:
  explicit FakeCluster(std::string called, unsigned seed = 1)
      : name(std::move(called)), m_random(seed) {}
  ~FakeCluster() {
    m_ends = true;
    if (m_thread.joinable()) m_thread.join();
  }

  // Instead of calls of Deliver.
  void RunThread() {
    m_thread = std::thread([this] {
      while (!m_ends) {
        Deliver();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
  }
  bool HasThread() const { return m_thread.joinable(); }

  // One step of time, a millisecond: stores what is due, and calls the users.
  void Deliver() {
    std::lock_guard calling(m_calling);
    std::vector<std::pair<const void*, std::function<void()>>> calls;
    {
      std::lock_guard lock(mutex);
      now += std::chrono::milliseconds(1);
      m_step++;
      for (auto at = m_due.begin(); at != m_due.end() && at->first <= m_step;) {
        auto due = std::move(at->second);
        at = m_due.erase(at);
        if (auto call = due.work()) calls.emplace_back(due.owner, std::move(call));
      }
    }
    came.notify_all();
    for (auto& [owner, call] : calls)
      if (!IsGone(owner)) call();
  }
  void Deliver(int steps) {
    while (steps--) Deliver();
  }

  // The connections of all engines break for this reason, or come back; their users hear of it.
  void Cut(const std::string& reason) {
    Tell([&] { down = reason; }, [reason](EngineUser& user) { user.OnDown(reason); });
  }
  void Restore() {
    Tell([&] { down.clear(); }, [](EngineUser& user) { user.OnUp("fake:1"); });
  }

  // Before any thread uses it, or with the lock.
  FakeFaults faults;
  std::set<std::string> refused;  // filters of subjects
  FakeStream stream;
  std::map<std::string, FakeStream> buckets;
  std::map<std::string, std::pair<const void*, Engine::Answer>> answers;
  EngineTime now{std::chrono::hours(24 * 365 * 50)};
  std::string down;  // why nothing can be reached now

  std::mutex mutex;
  std::condition_variable came;
  const std::string name;

  // With the lock held.
  bool Happens(int percent) { return percent && int(m_random() % 100) < percent; }
  int Below(int end) { return int(m_random() % unsigned(end)); }
  bool IsRefused(const std::string& subject) const {
    for (const auto& filter : refused)
      if (FakeSubjectMatches(filter, subject)) return true;
    return false;
  }
  // `work` runs under the lock, and returns what then is called without it.
  void After(int steps, const void* owner, std::function<std::function<void()>()> work) {
    m_due.emplace(m_step + unsigned(steps), Due{owner, std::move(work)});
  }

  // Waits for a call that runs; none comes afterwards.
  void Forget(const void* owner) {
    std::lock_guard calling(m_calling);
    std::lock_guard lock(mutex);
    m_gone.insert(owner);
    m_users.erase(owner);
    for (auto at = m_due.begin(); at != m_due.end();)
      at = at->second.owner == owner ? m_due.erase(at) : std::next(at);
    for (auto at = answers.begin(); at != answers.end();)
      at = at->second.first == owner ? answers.erase(at) : std::next(at);
  }
  void Remember(const void* owner, EngineUser& user) {
    std::lock_guard lock(mutex);
    m_gone.erase(owner);
    m_users[owner] = &user;
  }

 private:
  struct Due {
    const void* owner;
    std::function<std::function<void()>()> work;
  };

  template <class Change, class Call>
  void Tell(Change change, Call call) {
    std::lock_guard calling(m_calling);
    std::map<const void*, EngineUser*> users;
    {
      std::lock_guard lock(mutex);
      change();
      users = m_users;
    }
    came.notify_all();
    for (auto& [owner, user] : users)
      if (!IsGone(owner)) call(*user);
  }

  bool IsGone(const void* owner) {
    std::lock_guard lock(mutex);
    return m_gone.count(owner) > 0;
  }

  std::mt19937 m_random;
  std::recursive_mutex m_calling;
  std::multimap<std::uint64_t, Due> m_due;
  std::set<const void*> m_gone;
  std::map<const void*, EngineUser*> m_users;
  std::uint64_t m_step = 0;
  std::atomic<bool> m_ends = false;
  std::thread m_thread;
};
