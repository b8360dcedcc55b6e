// Publishes the frames of a machine's stream on an engine, so that none is confirmed to the service
// before the engine has stored it, and none is missing there that was confirmed.
//
// Shape    A state machine. Frames become messages in a queue. A window of them is under way; at
//          the first error, or when no answer comes, nothing is sent for a while, and then all
//          that were not acknowledged are sent again, in order, with the same ids.
//
//            taken     acknowledged  under way        waiting
//          ---------|#####?##?##########----------|..............
//                   front                        m_next
//
//          An acknowledgement is believed if it is of our stream, its sequence rises, and a
//          duplicate was sent before. A message that the engine wrongly says to have had goes again
//          under another id: readers drop what comes twice, and cannot get what was never stored.
//          A word, which has the last serials of all sources, goes out each second if they changed.
// Owner    The engine outlives it. Its user passes what the engine says on to OnAck and OnTrouble.
// Errors   What does not go is in Trouble(), in words, until something goes again.
// Threads  One. Time is what its user says.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <random>

#include "quor/engine/engine.h"
#include "quor/relay/publisher/parted_frame.h"
#include "quor/relay/publisher/published_sources.h"
#include "quor/relay/publisher/publisher_limits.h"

class Publisher {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // `stream`: of the engine. `machine`: of sources that nobody has named yet. `run`: another word
  // for each run of the program.
  Publisher(Engine& engine, std::string stream, std::string machine, std::string run,
            PublisherLimits limits = {});

  // What a later run of the program must know of a stream of the service.
  struct Kept {
    std::string stream;
    std::uint64_t frames = 0;   // that are taken
    std::uint64_t highest = 0;  // sequence of the engine that was believed
  };
  // The service's stream with this id begins. Frames of the one before go out first. `earlier`: an
  // earlier run has published some of it.
  void BeginStream(const std::string& id, const std::optional<Kept>& earlier = {});
  void Add(PartedFrame frame, Time now);
  // The engine has answered, does not go or goes again.
  void OnAck(std::uint64_t token, const EngineAck& ack, Time now);
  void OnTrouble(const std::string& why, Time now) { Stop(why, now); }
  void OnUp(Time now) { m_resume = now; }
  // Sends what may be sent. Call it after each other call, and at WakeAt.
  void Go(Time now);
  Time WakeAt(Time now) const;

  // The service may be told that these frames are taken.
  const Kept& Taken() const { return m_taken; }
  bool IsIdle() const { return m_queue.empty(); }
  std::size_t QueuedMessages() const { return m_queue.size(); }  // not acknowledged
  std::size_t QueuedBytes() const { return m_queuedBytes; }
  struct Counts {
    std::uint64_t messages = 0, bytes = 0;       // acknowledged
    std::uint64_t delivered = 0, lost = 0;       // traces in them
    std::uint64_t repeated = 0, unbelieved = 0;  // messages sent again, answers
  };
  const Counts& GetCounts() const { return m_counts; }
  const std::string& Trouble() const { return m_trouble; }  // empty: it goes
  PublishedSources& Sources() { return m_sources; }
  void SayWord() { m_isWordDue = true; }  // the last serials, with the next Go

 private:
  struct Message {
    std::string subject, id;
    std::vector<std::uint8_t> body;
    std::shared_ptr<const std::string> stream;  // of the service
    std::uint64_t frames = 0;                   // are taken with it; 0: none
    std::uint64_t delivered = 0, lost = 0;
    bool isResumed = false, isWord = false, isAcked = false;
    unsigned attempts = 0, attemptsOfId = 0;
    std::uint64_t after = 0;  // the highest sequence when it was first sent
    Time sent{}, came{};
    std::unique_ptr<Envelope> nameless;  // to be written when it goes
  };
  void Push(Message message, Time now);
  void AddEnvelope(const PartedFrame& frame, std::size_t part, Time now);
  void AddWords(Time now);
  bool IsReady(Message& message, Time now);
  bool Send(std::size_t at, Time now);
  void Stop(const std::string& why, Time now);
  enum class Belief { Yes, No, OtherId };
  Belief Judge(const Message& message, const EngineAck& ack, std::string& why);
  Belief JudgeSequence(const EngineAck& ack, std::string& why);
  void Believe(Message& message, const EngineAck& ack);
  void Doubt(Message& message, Belief belief, const std::string& why, Time now);
  void TakeFront();
  void NoteTaken(const std::shared_ptr<const std::string>& stream, std::uint64_t frames);

  Engine& m_engine;
  const std::string m_engineStream, m_machine, m_run;
  const PublisherLimits m_limits;
  std::shared_ptr<const std::string> m_stream;
  std::uint64_t m_skipped = 0;  // frames that an earlier run has published
  bool m_isResumed = false;
  PublishedSources m_sources;
  std::deque<Message> m_queue;
  std::uint64_t m_first = 0;  // number of the front
  std::size_t m_next = 0, m_bytes = 0, m_words = 0, m_queuedBytes = 0;
  bool m_isStopped = false, m_isWordDue = false;
  Time m_resume{};
  std::optional<Time> m_nextWord;
  std::chrono::milliseconds m_pause;
  std::minstd_rand m_random{std::random_device()()};
  std::uint64_t m_highest = 0, m_fresh = 0, m_word = 0;
  unsigned m_fell = 0;
  Kept m_taken;
  Counts m_counts;
  std::string m_trouble;
};
