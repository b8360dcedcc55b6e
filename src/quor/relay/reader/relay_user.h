// What a reader of the relay says, source by source, in the order of serials.
//
// Threads  The reader's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "quor/relay/reader/held_messages.h"

struct RelayOrigin {
  std::string machine, app, instance;
  std::uint32_t pid = 0;  // 0: not known yet
};

enum class RelayTrouble {
  WrongSubject,  // a message under the subject of another machine or application
  Torn,          // it contradicts itself or others, or counts what cannot be
  Forgotten,     // more sources than are known at a time
};

class RelayUser {
 public:
  // Where an earlier reader ended with this source; nothing: it does not know the source.
  virtual std::optional<std::uint64_t> Known(const RelayOrigin& origin) = 0;
  // Before the first call about a source. `id` is never used again after OnEnd.
  virtual void OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) = 0;
  virtual void OnMessage(std::uint64_t id, const RelayMessage& message) = 0;
  // These traces are not in the stream.
  virtual void OnLost(std::uint64_t id, std::uint64_t lost) = 0;
  virtual void OnEnd(std::uint64_t id) = 0;
  virtual void OnTrouble(RelayTrouble trouble, const std::string& what) = 0;

 protected:
  ~RelayUser() = default;
};
