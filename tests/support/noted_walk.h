// What a walk over a .trc file meets, written down: by one walker, and by several that meet.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/bytes.h"
#include "records/trc_walk.h"
#include "records/walkers/trc_walkers.h"

struct NotedRecord {
  enum class Kind { Name, Trace, Skipped } kind;
  std::uint64_t position;  // a name: its id
  std::string name = {};
  bool operator==(const NotedRecord&) const = default;
};

struct NotedWalk {
  std::vector<NotedRecord> records = {};
  std::uint64_t reached = 0;
  std::uint64_t cutAt = 0;  // 0: nowhere
  bool operator==(const NotedWalk&) const = default;
};

// A part that writes down all that it meets.
class NotedPart final : public TrcPart {
 public:
  std::uint64_t Walk(Bytes file, std::uint64_t from, std::uint64_t limit,
                     const Look& look) override {
    noted.reached = WalkTrc(file.first(limit), Sink{*this, file, look}, from);
    if (noted.reached <= file.size()) noted.cutAt = 0;
    return noted.reached;
  }

  NotedWalk noted;

 private:
  struct Sink {
    NotedPart& part;
    Bytes file;
    const Look& look;
    void Add(NotedRecord record) { part.noted.records.push_back(std::move(record)); }
    void OnName(NameId id, std::string_view utf8) {
      Add({NotedRecord::Kind::Name, id, std::string(utf8)});
    }
    void OnTrace(const std::uint8_t* record) {
      Add({NotedRecord::Kind::Trace, static_cast<std::uint64_t>(record - file.data())});
    }
    void OnUnknownTag(std::uint64_t position) { Add({NotedRecord::Kind::Skipped, position}); }
    void OnCutRecord(std::uint64_t position) { part.noted.cutAt = position; }
    bool OnProgress(std::uint64_t position) { return look(position); }
  };
};

class NotedParts final : public TrcParts {
 public:
  std::unique_ptr<TrcPart> NewPart(std::uint64_t from, std::uint64_t limit) override {
    asked += limit > from ? limit - from : 0;
    ++pieces;
    if (from == kTrcHeaderBytes) LetOthersBegin();
    return std::make_unique<NotedPart>();
  }
  void Take(TrcPart& part) override {
    NotedWalk& walk = static_cast<NotedPart&>(part).noted;
    noted.records.insert(noted.records.end(), walk.records.begin(), walk.records.end());
    if (walk.cutAt) noted.cutAt = walk.cutAt;
    ++taken;
  }
  bool OnProgress(std::uint64_t bytes) override { return bytes < cancelAt; }

  NotedWalk noted;
  std::atomic<std::uint64_t> asked = 0;  // bytes of the pieces
  int taken = 0;
  std::uint64_t cancelAt = ~std::uint64_t{0};
  // The first piece is not walked before there are so many, or the time is over. Otherwise the
  // others would come too late to guess in a small file.
  int held = 0;
  std::chrono::microseconds heldFor{300};

 private:
  void LetOthersBegin() const {
    const auto until = std::chrono::steady_clock::now() + heldFor;
    while (pieces < held && std::chrono::steady_clock::now() < until) std::this_thread::yield();
  }
  std::atomic<int> pieces = 0;
};

inline NotedWalk WalkedAlone(Bytes file) {
  NotedPart part;
  part.Walk(file, kTrcHeaderBytes, file.size(), [](std::uint64_t) { return true; });
  return part.noted;
}

inline NotedWalk WalkedTogether(Bytes file, const TrcWalkers& walkers, bool holds = true) {
  NotedParts parts;
  if (holds) parts.held = static_cast<int>(walkers.count);
  parts.noted.reached = WalkTrcTogether(file, walkers, parts);
  return parts.noted;
}
