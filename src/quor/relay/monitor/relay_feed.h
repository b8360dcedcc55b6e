// Reads the messages that an engine stores, on a thread of its own, piece by piece.
//
// Shape    A piece is at most about kPieceBytes of unpacked traces, and the next one is read when
//          its taker says so: a reader that is not asked costs the engine nothing. Words that come
//          through a reader of their own are given out behind the messages that were stored before
//          them. The time of a piece goes on only while the engine is read and answers.
// Owner    Owns its engine. `take` is called until the destructor has returned.
// Errors   The engine's troubles are pieces without messages, with words. It goes on trying.
// Threads  Made and destroyed on one thread; GoOn and Restart on any. `take` is called on the
//          feed's own.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "quor/engine/engine.h"
#include "quor/relay/reader/held_messages.h"

// What to read: the filter of messages, and that of words where the first one lacks them.
struct FeedPlan {
  std::string messages, words;
  std::string app;  // of words only the lines about it; empty: all
  EngineStart start;
};

struct FedItem {
  std::string machine, app;  // of the subject
  std::optional<RelayMessage> message;
  MachineWord word;  // else
};

struct FedPiece {
  EngineReader::State state = EngineReader::State::Quiet;
  std::string why;          // of Broken and BegunAnew; a broken piece has no items
  std::string whyNoWords;   // where words have a reader of their own, which is broken
  bool isHopeless = false;  // broken before it began, and not by the engine
  std::vector<FedItem> items;
  RelayMessage::Time now{0};
  // Messages that cannot be read, and why the last one cannot.
  std::uint64_t malformed = 0;
  std::string whyMalformed;
};

class RelayFeed final : private EngineUser {
 public:
  static constexpr std::size_t kPieceBytes = 2u << 20;
  using MakeEngine = std::function<std::unique_ptr<Engine>(EngineUser& user, std::string* why)>;
  using Take = std::function<void(FedPiece piece)>;

  RelayFeed(MakeEngine make, FeedPlan plan, Take take);
  ~RelayFeed();
  RelayFeed(const RelayFeed&) = delete;

  // The piece was taken.
  void GoOn();
  // The same; and what comes next begins there.
  void Restart(EngineStart start);

 private:
  struct WaitingWord {
    std::uint64_t sequence;
    FedItem item;
  };
  void OnAck(std::uint64_t, const EngineAck&) override {}
  void OnRefused(const std::string& what) override;
  void OnDown(const std::string& why) override;
  void OnUp(const std::string& server) override;

  void Run();
  bool Open(std::string* why);
  void Read();
  void ReadWords(FedPiece& piece);
  void Add(const EngineMessage& message, FedPiece& piece);
  void HandOver(FedPiece& piece);
  void Pause();
  std::string WordsFor(const std::string& why);
  bool IsEnded();

  const MakeEngine m_make;
  FeedPlan m_plan;
  const Take m_take;
  std::unique_ptr<Engine> m_engine;
  std::unique_ptr<EngineReader> m_reader, m_wordReader;
  std::deque<WaitingWord> m_words;
  std::uint64_t m_sequence = 0;  // of the last message
  RelayMessage::Time m_now{0};
  std::size_t m_bytes = 0;  // of the piece that is filled
  bool m_again = false;
  std::mutex m_mutex;  // of all below
  std::condition_variable m_changed;
  std::string m_refused, m_down;
  std::optional<EngineStart> m_restart;
  bool m_mayGoOn = false, m_ended = false;
  std::thread m_thread;  // last
};
