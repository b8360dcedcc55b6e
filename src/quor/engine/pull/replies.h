// What an engine says, out of its JSON and its subjects.
//
// Shape    The texts are from other machines: each is checked, and what is missing is 0 or empty.
// Errors   False and a reason: the engine's own words if it refuses.
// Threads  Pure.
#pragma once

#include <optional>
#include <string>

#include "quor/engine/engine.h"

// The number of an engine's error that says more than its words.
constexpr int kNoSuchStream = 10059, kNoSuchMessage = 10037, kOtherRevision = 10071;

// Of an acknowledgement. `error` is the engine's number, if it refuses.
EngineAck ReadPublishAck(Bytes body, int& error);

struct StreamState {
  std::string created;
  std::uint64_t first = 0, last = 0;
};
bool ReadStreamState(Bytes body, StreamState& state, std::string* why);

// The answer to the making of a consumer.
bool ReadConsumerMade(Bytes body, std::string* why);

// The last value of a key; the engine's error is in `error`.
bool ReadStoredMessage(Bytes body, EngineValue& value, int& error, std::string* why);

// Where a message that was delivered stands: "$JS.ACK..." with 9 words, or 12.
struct DeliveredPlace {
  std::string consumer;
  std::uint64_t sequence = 0, ofConsumer = 0;
  EngineTime arrived{};
};
std::optional<DeliveredPlace> ReadDeliveredPlace(const std::string& reply);

// "2026-11-24T00:10:02.000000001Z".
std::string EngineTimeText(EngineTime time);
