#include "quor/engine/jetstream/stream_setup.h"

#include <nlohmann/json.hpp>
#include <thread>

#include "base/fail_with.h"
#include "quor/engine/pull/replies.h"

using namespace std::chrono_literals;
using Json = nlohmann::json;

namespace {

constexpr std::chrono::nanoseconds kDuplicates = 2min;

std::int64_t Limit(std::uint64_t most) {
  return most ? std::int64_t(most) : -1;
}

// How a value is said in a difference: times in seconds.
std::string Said(const std::string& key, const Json& value) {
  const bool time = key == "max_age" || key == "duplicate_window";
  if (!time || !value.is_number_integer()) return value.dump();
  return std::to_string(value.get<std::int64_t>() / 1'000'000'000) + " s";
}

std::string Differences(const Json& wanted, const Json& there) {
  std::string text;
  for (const auto& [key, value] : wanted.items()) {
    const auto at = there.find(key);
    // The engine leaves out what is false or empty.
    const bool missing = at == there.end();
    if (missing ? value == Json(false) || value == Json(0) || value == Json("") : *at == value)
      continue;
    text += (text.empty() ? "" : "; ") + key + " is " + (missing ? "not set" : Said(key, *at)) +
            ", not " + Said(key, value);
  }
  return text;
}

}  // namespace

std::unique_ptr<StreamSetup> StreamSetup::Make(const NatsAddress& address, std::string* why) {
  std::unique_ptr<StreamSetup> setup(new StreamSetup);
  auto* const self = setup.get();
  const auto ignore = [](const std::string&) {};
  const auto reached = [self](const std::string&) { self->m_reached = true; };
  const auto refused = [self](const std::string& what) {
    std::lock_guard lock(self->m_mutex);
    if (self->m_asker) self->m_asker->Refuse(what);
  };
  setup->m_link = NatsLink::Make(address, {reached, ignore, refused}, why);
  if (!setup->m_link) return nullptr;
  auto asker = NatsAsker::Make(
      *setup->m_link, [](std::uint64_t, const BusMessage&) {}, why);
  std::lock_guard lock(setup->m_mutex);
  setup->m_asker = std::move(asker);
  if (!setup->m_asker) return nullptr;
  return setup;
}

StreamSetup::Made StreamSetup::MakeStream(const StreamPlan& plan, bool change,
                                          std::chrono::milliseconds deadline, std::string* why) {
  const Json config = {{"name", plan.name},
                       {"subjects", plan.subjects},
                       {"num_replicas", plan.replicas},
                       {"storage", "file"},
                       {"retention", "limits"},
                       {"discard", "old"},
                       {"max_age", std::chrono::nanoseconds(plan.maxAge).count()},
                       {"max_bytes", Limit(plan.maxBytes)},
                       {"max_msgs_per_subject", Limit(plan.maxOfSubject)},
                       {"duplicate_window", kDuplicates.count()},
                       {"allow_direct", false}};
  return MakeOf(plan.name, config.dump(), change, deadline, why);
}

StreamSetup::Made StreamSetup::MakeBucket(const std::string& name, int replicas, bool change,
                                          std::chrono::milliseconds deadline, std::string* why) {
  const Json config = {{"name", "KV_" + name},      {"subjects", {"$KV." + name + ".>"}},
                       {"num_replicas", replicas},  {"storage", "file"},
                       {"retention", "limits"},     {"discard", "new"},
                       {"max_msgs_per_subject", 1}, {"allow_rollup_hdrs", true},
                       {"deny_delete", true},       {"allow_direct", false}};
  return MakeOf("KV_" + name, config.dump(), change, deadline, why);
}

std::optional<BusMessage> StreamSetup::Ask(const std::string& subject, const std::string& question,
                                           std::chrono::steady_clock::time_point end,
                                           std::string* why) {
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(question.data()), question.size());
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    std::string reason;
    auto answer = m_asker->Ask(subject, bytes, std::clamp(left, 0ms, 3000ms), nullptr, &reason);
    if (answer && !answer->status) return answer;
    if (answer) reason = "no server of the engine keeps streams now";
    const bool refused = reason.find("ermissions") != reason.npos;
    if (refused || std::chrono::steady_clock::now() + 100ms >= end)
      return FailWith(why, reason, std::nullopt);
    std::this_thread::sleep_for(100ms);
  }
}

StreamSetup::Made StreamSetup::MakeOf(const std::string& name, const std::string& config,
                                      bool change, std::chrono::milliseconds deadline,
                                      std::string* why) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  const auto info = Ask("$JS.API.STREAM.INFO." + name, "", end, why);
  if (!info) return Made::Failed;
  const Json there = Json::parse(info->body.begin(), info->body.end(), nullptr, false);
  if (!there.is_object()) return FailWith(why, "the engine's answer cannot be read", Made::Failed);
  bool is = there.contains("config") && there["config"].is_object();
  StreamState state;
  int error = 0;
  const Bytes said(info->body.data(), info->body.size());
  if (!is && (ReadPublishAck(said, error), error != kNoSuchStream))
    return ReadStreamState(said, state, why), Made::Failed;
  if (is) {
    const std::string differences = Differences(Json::parse(config), there["config"]);
    if (differences.empty()) return Made::Same;
    if (!change) return FailWith(why, differences, Made::Other);
  }
  // What is not in the plan stays as it is.
  Json next = is ? there["config"] : Json::object();
  next.update(Json::parse(config));
  const auto answer = Ask(std::string("$JS.API.STREAM.") + (is ? "UPDATE." : "CREATE.") + name,
                          next.dump(), end, why);
  if (!answer) return Made::Failed;
  if (!ReadStreamState({answer->body.data(), answer->body.size()}, state, why)) return Made::Failed;
  return is ? Made::Changed : Made::New;
}
