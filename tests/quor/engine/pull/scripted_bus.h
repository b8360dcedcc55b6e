// An engine that a test plays by hand: what the loop sent, and what comes next.
#pragma once

#include <deque>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "quor/engine/pull/pull_loop.h"

class ScriptedBus : public EngineBus {
 public:
  struct Sent {
    std::string subject, reply;
    nlohmann::json body;
  };
  virtual ~ScriptedBus() = default;

  bool Send(const std::string& subject, const std::string& reply, const std::string& body,
            std::string* why) override {
    if (!refuses.empty()) return FailWith(why, refuses);
    sent.push_back({subject, reply,
                    body.empty() ? nlohmann::json() : nlohmann::json::parse(body, nullptr, false)});
    return true;
  }

  std::deque<Sent> sent;
  std::string refuses;
};

// A loop with its bus and its clock. The engine's side is in words of the test.
class PulledStream {
 public:
  static PullTarget Target(EngineStart start = {}) {
    PullTarget target;
    target.stream = "S";
    target.filter = "t.>";
    target.inbox = "_INBOX.x.r1";
    target.consumer = "c";
    target.start = start;
    return target;
  }

  explicit PulledStream(PullTarget target = Target()) : loop(std::move(target), bus) {}

  void Pass(std::chrono::milliseconds time) { now += time; }
  PullLoop::Time Tick() { return loop.Tick(now); }

  // What the loop sent first of what was not looked at; its subject is empty if it sent nothing.
  ScriptedBus::Sent Sent() {
    Tick();
    if (bus.sent.empty()) return {};
    auto first = bus.sent.front();
    bus.sent.pop_front();
    return first;
  }

  void Say(const std::string& subject, const std::string& text) {
    BusMessage message;
    message.subject = subject;
    message.body.assign(text.begin(), text.end());
    loop.OnMessage(now, std::move(message));
  }
  void SayStatus(const std::string& subject, int status, const std::string& words = "",
                 std::uint64_t lastConsumer = 0) {
    BusMessage message;
    message.subject = subject;
    message.status = status;
    message.description = words;
    message.lastConsumer = lastConsumer;
    loop.OnMessage(now, std::move(message));
  }
  void Deliver(std::uint64_t sequence, std::uint64_t ofConsumer, const std::string& by,
               std::size_t bytes = 1) {
    BusMessage message;
    message.subject = "t.a";
    message.reply = "$JS.ACK.S." + by + ".1." + std::to_string(sequence) + "." +
                    std::to_string(ofConsumer) + ".1700000000000000000.0";
    message.body.resize(bytes);
    loop.OnMessage(now, std::move(message));
  }

  // The question for the state of the stream comes next, and is answered.
  bool SayState(std::uint64_t last, const std::string& created = "monday") {
    const auto asked = Sent();
    if (asked.subject != "$JS.API.STREAM.INFO.S") return false;
    Say(asked.reply, R"({"created":")" + created + R"(","state":{"first_seq":1,"last_seq":)" +
                         std::to_string(last) + "}}");
    return true;
  }
  // A consumer is made next: its configuration. Null: it is not.
  nlohmann::json SayMade() {
    const auto asked = Sent();
    if (!asked.subject.starts_with("$JS.API.CONSUMER.CREATE.S.c")) return {};
    consumer = asked.body["config"]["name"];
    Say(asked.reply, R"({"name":")" + consumer + R"("})");
    return asked.body["config"];
  }
  // All of it, and the first request.
  ScriptedBus::Sent Begin(std::uint64_t last = 100) {
    if (!SayState(last) || SayMade().is_null()) return {};
    return Sent();
  }

  std::string Taken() {
    std::vector<EngineMessage> messages;
    loop.Take(messages);
    std::string text;
    for (const auto& message : messages) text += std::to_string(message.sequence) + " ";
    return text;
  }

  ScriptedBus bus;
  PullLoop::Time now{std::chrono::hours(1)};
  PullLoop loop;
  std::string consumer;
};
