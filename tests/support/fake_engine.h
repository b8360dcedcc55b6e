// An engine in memory: a connection to a FakeCluster, which says what goes wrong.
//
// Shape    A reader that finds nothing waits for its deadline if the cluster has a thread of its
//          own; else the time of the cluster goes on and it returns.
#pragma once

#include "base/fail_with.h"
#include "support/fake_cluster.h"

class FakeEngineReader : public EngineReader {
 public:
  FakeEngineReader(FakeCluster& cluster, FakeStream& stream, std::string filter, EngineStart start)
      : m_cluster(cluster),
        m_stream(stream),
        m_filter(std::move(filter)),
        m_next(stream.First(start)),
        m_made(stream.made) {}

  State Next(std::chrono::milliseconds deadline, std::vector<EngineMessage>& messages,
             std::string* why) override {
    messages.clear();
    const auto end = std::chrono::steady_clock::now() + deadline;
    auto steps = deadline.count();
    std::unique_lock lock(m_cluster.mutex);
    while (true) {
      if (m_made != m_stream.made && m_cluster.down.empty()) {
        m_made = m_stream.made;
        m_next = 1;
        return FailWith(why, "the stream was made again", State::BegunAnew);
      }
      if (m_cluster.down.empty() && !m_cluster.IsRefused(m_filter)) Take(messages);
      if (!messages.empty()) return State::Messages;
      const bool woken = std::exchange(m_woken, false);
      if (woken || !Wait(lock, end, steps)) break;
    }
    if (!m_cluster.down.empty()) return FailWith(why, m_cluster.down, State::Broken);
    if (m_cluster.IsRefused(m_filter))
      return FailWith(why, "reading of \"" + m_filter + "\" is not allowed", State::Broken);
    return State::Quiet;
  }

  void Wake() override {
    std::lock_guard lock(m_cluster.mutex);
    m_woken = true;
    m_cluster.came.notify_all();
  }

 private:
  // False: the time is over.
  bool Wait(std::unique_lock<std::mutex>& lock, std::chrono::steady_clock::time_point end,
            std::chrono::milliseconds::rep& steps) {
    if (m_cluster.HasThread())
      return m_cluster.came.wait_until(lock, end) == std::cv_status::no_timeout;
    if (steps-- <= 0) return false;
    lock.unlock();
    m_cluster.Deliver();
    lock.lock();
    return true;
  }

  void Take(std::vector<EngineMessage>& messages) {
    const auto& faults = m_cluster.faults;
    for (const auto& message : m_stream.Messages()) {
      if (message.sequence < m_next) continue;
      m_next = message.sequence + 1;
      if (!FakeSubjectMatches(m_filter, message.subject)) continue;
      if (m_cluster.Happens(faults.readLost)) continue;
      messages.push_back(message);
      if (m_cluster.Happens(faults.readTwice)) messages.push_back(message);
      if (messages.size() > 1 && m_cluster.Happens(faults.readSwapped))
        std::swap(messages.back(), messages[messages.size() - 2]);
      if (messages.size() >= 256) return;
    }
  }

  FakeCluster& m_cluster;
  FakeStream& m_stream;
  std::string m_filter;
  std::uint64_t m_next;
  unsigned m_made;
  bool m_woken = false;
};

class FakeEngine : public Engine {
 public:
  FakeEngine(FakeCluster& cluster, EngineUser& user) : m_cluster(cluster), m_user(user) {
    m_cluster.Remember(this, user);
  }
  ~FakeEngine() override { m_cluster.Forget(this); }

  bool Publish(const std::string& subject, const std::string& id, Bytes body, std::uint64_t token,
               std::string* why) override {
    std::lock_guard lock(m_cluster.mutex);
    if (!m_cluster.down.empty()) return FailWith(why, m_cluster.down);
    EngineMessage message{subject, id, {body.begin(), body.end()}, 0, {}};
    const int steps = 1 + (m_cluster.Happens(m_cluster.faults.late) ? m_cluster.Below(20) : 0);
    m_cluster.After(steps, this, [this, token, message = std::move(message)]() mutable {
      return Arrive(std::move(message), token);
    });
    return true;
  }

  std::unique_ptr<EngineReader> Read(const std::string& filter, EngineStart start,
                                     std::string*) override {
    std::lock_guard lock(m_cluster.mutex);
    if (m_cluster.IsRefused(filter)) Refuse("Subscription", filter);
    return std::make_unique<FakeEngineReader>(m_cluster, m_cluster.stream, filter, start);
  }

  std::optional<EngineValue> Get(const std::string& bucket, const std::string& key,
                                 std::chrono::milliseconds, std::string* why) override {
    std::lock_guard lock(m_cluster.mutex);
    if (!m_cluster.down.empty()) return FailWith(why, m_cluster.down, std::nullopt);
    const auto* last = m_cluster.buckets[bucket].Last(key);
    return last ? EngineValue{last->body, last->sequence} : EngineValue{};
  }

  Put PutValue(const std::string& bucket, const std::string& key, Bytes value,
               std::uint64_t& revision, std::chrono::milliseconds, std::string* why) override {
    std::unique_lock lock(m_cluster.mutex);
    if (!m_cluster.down.empty()) return FailWith(why, m_cluster.down, Put::Failed);
    if (m_cluster.IsRefused(key)) return FailWith(why, Refuse("Publish", key), Put::Failed);
    auto& stream = m_cluster.buckets[bucket];
    stream.mostOfSubject = 1;
    const auto* last = stream.Last(key);
    if ((last ? last->sequence : 0) != revision)
      return FailWith(why, "\"" + key + "\" was changed by someone else", Put::Changed);
    revision = stream.Store({key, {}, {value.begin(), value.end()}, 0, m_cluster.now});
    m_cluster.came.notify_all();
    return Put::Done;
  }

  std::unique_ptr<EngineReader> Watch(const std::string& bucket, const std::string& keys,
                                      std::string*) override {
    std::lock_guard lock(m_cluster.mutex);
    return std::make_unique<FakeEngineReader>(m_cluster, m_cluster.buckets[bucket], keys,
                                              EngineStart{});
  }

  std::optional<std::vector<std::uint8_t>> Ask(const std::string& subject, Bytes question,
                                               std::chrono::milliseconds,
                                               std::string* why) override {
    Answer answer;
    {
      std::lock_guard lock(m_cluster.mutex);
      if (!m_cluster.down.empty()) return FailWith(why, m_cluster.down, std::nullopt);
      const auto at = m_cluster.answers.find(subject);
      if (at != m_cluster.answers.end()) answer = at->second.second;
    }
    if (!answer) return FailWith(why, "nobody answers \"" + subject + "\"", std::nullopt);
    return answer(question);
  }

  bool Serve(const std::string& subject, Answer answer, std::string*) override {
    std::lock_guard lock(m_cluster.mutex);
    m_cluster.answers[subject] = {this, std::move(answer)};
    return true;
  }

 private:
  // With the lock held. What the user hears of a message that came.
  std::function<void()> Arrive(EngineMessage message, std::uint64_t token) {
    const auto& faults = m_cluster.faults;
    const auto say = [this, token](EngineAck ack) {
      return [this, token, ack] { m_user.OnAck(token, ack); };
    };
    if (m_cluster.IsRefused(message.subject)) return Refuse("Publish", message.subject), nullptr;
    if (!m_cluster.down.empty() || m_cluster.Happens(faults.lost)) return nullptr;
    if (m_cluster.Happens(faults.otherStream)) return say({true, false, "OTHER", 1, ""});
    if (m_cluster.Happens(faults.falseDuplicate)) return say({true, true, m_cluster.name, 1, ""});
    auto& stream = m_cluster.stream;
    message.arrived = m_cluster.now;
    const bool doubled = m_cluster.Happens(faults.doubled);
    std::uint64_t sequence = stream.Find(message.id);
    const bool duplicate = sequence && !doubled;
    if (!duplicate) sequence = stream.Store(message);
    if (doubled) stream.Store(message);
    if (m_cluster.Happens(faults.noAck)) return nullptr;
    if (m_cluster.Happens(faults.falling) && sequence > 1) sequence /= 2;
    return say({true, duplicate, m_cluster.name, sequence, ""});
  }

  // With the lock held.
  std::string Refuse(const std::string& deed, const std::string& subject) {
    const std::string what = "Permissions Violation for " + deed + " to \"" + subject + "\"";
    m_cluster.After(1, this, [this, what] { return [this, what] { m_user.OnRefused(what); }; });
    return what;
  }

  FakeCluster& m_cluster;
  EngineUser& m_user;
};
