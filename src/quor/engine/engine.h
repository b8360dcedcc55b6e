// The engine: a service of other machines that stores messages in one named stream and gives them
// to readers, and keeps values under keys. This is all that the bridge asks of it.
//
// Shape    A message has a subject, which is words joined by dots, an id, and a body. The stream
//          numbers its messages from 1, and drops the oldest ones beyond its limits. In a filter of
//          subjects `*` stands for one word, and `>` for all that follow.
// Trust    An engine may lose, double, delay, reorder and trim messages, give acknowledgements of
//          another stream or none, and begin its stream anew. Its users count by themselves.
// Owner    The users outlive the object that calls them.
// Errors   False and a reason in words for a person. What fails later comes through the users. A
//          permission that is refused shows only there: see EngineUser::OnRefused.
// Threads  The calls from any thread. The users are called on threads of the engine, one call at a
//          time for each user; they must not wait there.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"

using EngineTime = std::chrono::sys_time<std::chrono::nanoseconds>;

// What the engine said to a message that was published.
struct EngineAck {
  bool stored = false;
  bool duplicate = false;      // it had this id already
  std::string stream;          // that took it
  std::uint64_t sequence = 0;  // there
  std::string why;             // not stored: in words
};

class EngineUser {
 public:
  // The answer to Publish with this token. None may ever come.
  virtual void OnAck(std::uint64_t token, const EngineAck& ack) = 0;
  // The engine does not allow something: its own words, which name the subject.
  virtual void OnRefused(const std::string& what) = 0;
  virtual void OnDown(const std::string& why) = 0;
  virtual void OnUp(const std::string& server) = 0;

 protected:
  ~EngineUser() = default;
};

struct EngineMessage {
  std::string subject, id;
  std::vector<std::uint8_t> body;
  std::uint64_t sequence = 0;
  EngineTime arrived{};  // at the engine
};

// Where a reader begins: with the oldest message, one that came at this time or later, with the
// next one that comes, or with a sequence.
struct EngineStart {
  enum class At { Oldest, Time, Next, Sequence } at = At::Oldest;
  EngineTime time{};
  std::uint64_t sequence = 0;
};

// The messages of one filter, in the order of the stream, from where it began. It is one thread's.
// A reader that does not ask costs the engine nothing, and is overtaken when the stream drops
// messages.
class EngineReader {
 public:
  enum class State {
    Messages,   // some came
    Quiet,      // none came in time, and the engine answers
    Broken,     // the engine does not answer or refuses; the reader goes on trying
    BegunAnew,  // the stream was made again, or has lost its end: sequences begin anew
  };
  virtual ~EngineReader() = default;
  // Waits until `deadline` at most. `messages` is replaced. `why`: of Broken and BegunAnew.
  virtual State Next(std::chrono::milliseconds deadline, std::vector<EngineMessage>& messages,
                     std::string* why) = 0;
  // From any thread: a Next that waits returns soon, with Quiet.
  virtual void Wake() = 0;
};

struct EngineValue {
  std::vector<std::uint8_t> value;
  std::uint64_t revision = 0;  // 0: the key has none
};

class Engine {
 public:
  virtual ~Engine() = default;
  // Does not wait. Messages are sent in the order of the calls. False: it was not sent.
  virtual bool Publish(const std::string& subject, const std::string& id, Bytes body,
                       std::uint64_t token, std::string* why) = 0;
  // The name of the stream is the one that the engine was made with.
  virtual std::unique_ptr<EngineReader> Read(const std::string& filter, EngineStart start,
                                             std::string* why) = 0;

  // Values by key in a named bucket. A put succeeds only if the key is still at `revision`.
  virtual std::optional<EngineValue> Get(const std::string& bucket, const std::string& key,
                                         std::chrono::milliseconds deadline, std::string* why) = 0;
  enum class Put { Done, Changed, Failed };
  virtual Put PutValue(const std::string& bucket, const std::string& key, Bytes value,
                       std::uint64_t& revision, std::chrono::milliseconds deadline,
                       std::string* why) = 0;
  // The changes of keys: subjects are keys, and an empty body is a key that was removed.
  virtual std::unique_ptr<EngineReader> Watch(const std::string& bucket, const std::string& keys,
                                              std::string* why) = 0;

  // Nothing with a reason: also at once when nobody serves the subject.
  virtual std::optional<std::vector<std::uint8_t>> Ask(const std::string& subject, Bytes question,
                                                       std::chrono::milliseconds deadline,
                                                       std::string* why) = 0;
  using Answer = std::function<std::vector<std::uint8_t>(Bytes question)>;
  // Answers questions until the engine ends, on a thread of the engine's.
  virtual bool Serve(const std::string& subject, Answer answer, std::string* why) = 0;
};
