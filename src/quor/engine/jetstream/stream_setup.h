// Makes the stream and the buckets that an engine's users rely on. Nothing is ever deleted.
//
// Shape    A stream that exists with other settings stays as it is, unless a change is asked for.
// Errors   Failed and a reason. Other: `why` says each difference, one after the other.
// Threads  Any; it waits up to the deadline, also for a leader of the servers.
#pragma once

#include <atomic>

#include "quor/engine/jetstream/nats_asker.h"

struct StreamPlan {
  std::string name;
  std::vector<std::string> subjects;
  int replicas = 3;
  // 0: no limit.
  std::chrono::seconds maxAge{0};
  std::uint64_t maxBytes = 0, maxOfSubject = 0;
};

class StreamSetup {
 public:
  enum class Made { New, Same, Changed, Other, Failed };
  static std::unique_ptr<StreamSetup> Make(const NatsAddress& address, std::string* why);

  Made MakeStream(const StreamPlan& plan, bool change, std::chrono::milliseconds deadline,
                  std::string* why);
  // A bucket of values: each key has one.
  Made MakeBucket(const std::string& name, int replicas, bool change,
                  std::chrono::milliseconds deadline, std::string* why);
  // A server was connected at some time.
  bool WasReached() const { return m_reached; }

 private:
  StreamSetup() = default;
  Made MakeOf(const std::string& name, const std::string& config, bool change,
              std::chrono::milliseconds deadline, std::string* why);
  // The answer, asked again while no server takes the question.
  std::optional<BusMessage> Ask(const std::string& subject, const std::string& question,
                                std::chrono::steady_clock::time_point end, std::string* why);

  std::atomic<bool> m_reached{false};
  std::unique_ptr<NatsLink> m_link;
  std::mutex m_mutex;  // m_asker, while it is made
  std::unique_ptr<NatsAsker> m_asker;
};
