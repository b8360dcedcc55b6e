#include "quor/engine/pull/pull_loop.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"

using namespace std::chrono_literals;

namespace {

constexpr unsigned kBatch = 256;
constexpr std::size_t kMostBytes = 4 * 1024 * 1024;
constexpr std::chrono::nanoseconds kHeartbeat = 500ms, kRequestTime = 30s;
constexpr auto kSilence = 1250ms, kAnswerTime = 2000ms, kLongestPause = 2000ms;
// The end of a stream falls for a moment when its leader changes.
constexpr auto kFallen = 3000ms;

constexpr char kApi[] = "$JS.API.";

Bytes BytesOf(const BusMessage& message) {
  return {message.body.data(), message.body.size()};
}

}  // namespace

PullLoop::PullLoop(PullTarget target, EngineBus& bus)
    : m_target(std::move(target)), m_bus(bus), m_broken("the engine has not answered yet") {
  if (m_target.start.at == EngineStart::At::Sequence) m_resume = m_target.start.sequence;
}

PullLoop::Time PullLoop::Tick(Time now) {
  if ((m_step == Step::Ask || m_step == Step::Make) && now >= m_due)
    Again(now, "the engine does not answer");
  std::erase_if(m_requests, [&](const Request& request) { return now >= request.end; });
  if (!m_requests.empty() && now - m_heard >= kSilence) Again(now, "the engine is silent");
  if (m_step == Step::Pause && now >= m_due) AskState(now);
  AskMessages(now);
  if (m_step == Step::Anew) return now + 1h;
  if (m_step != Step::Pull) return m_due;
  return m_requests.empty() ? now + 100ms : m_heard + kSilence;
}

bool PullLoop::Take(std::vector<EngineMessage>& messages) {
  messages.clear();
  messages.swap(m_messages);
  m_bytes = 0;
  return !messages.empty();
}

bool PullLoop::TakeAnew(std::string* why) {
  if (m_step != Step::Anew || !m_messages.empty()) return false;
  FailWith(why, m_anew);
  m_step = Step::Pause;
  m_due = {};
  return true;
}

void PullLoop::Send(Time now, const std::string& subject, char kind, const std::string& body) {
  std::string why;
  const std::string reply = m_target.inbox + "." + kind + std::to_string(++m_number);
  if (!m_bus.Send(kApi + subject, reply, body, &why)) Again(now, why);
}

void PullLoop::AskState(Time now) {
  m_step = Step::Ask;
  m_due = now + kAnswerTime;
  Send(now, "STREAM.INFO." + m_target.stream, 'i', "");
}

void PullLoop::MakeConsumer(Time now) {
  using At = EngineStart::At;
  m_consumer++;
  m_ofConsumer = 0;
  const std::string name = ConsumerName();
  nlohmann::json config = {{"name", name},
                           {"ack_policy", "none"},
                           {"replay_policy", "instant"},
                           {"filter_subject", m_target.filter},
                           {"inactive_threshold", std::chrono::nanoseconds(10s).count()},
                           {"num_replicas", 1},
                           {"mem_storage", true},
                           {"deliver_policy", "all"}};
  if (m_resume) {
    config["deliver_policy"] = "by_start_sequence";
    config["opt_start_seq"] = m_resume;
  } else if (m_target.lastOfEach) {
    config["deliver_policy"] = "last_per_subject";
  } else if (m_target.start.at == At::Time) {
    config["deliver_policy"] = "by_start_time";
    config["opt_start_time"] = EngineTimeText(m_target.start.time);
  }
  const nlohmann::json body = {{"stream_name", m_target.stream}, {"config", config}};
  m_step = Step::Make;
  m_due = now + kAnswerTime;
  Send(now, "CONSUMER.CREATE." + m_target.stream + "." + name + "." + m_target.filter, 'c',
       body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void PullLoop::AskMessages(Time now) {
  if (m_step != Step::Pull || m_requests.size() >= 2 || m_bytes >= kMostBytes) return;
  if (!m_requests.empty() && (m_large || m_requests.front().left > kBatch / 2)) return;
  const unsigned batch = m_large ? 1 : kBatch;
  nlohmann::json body = {
      {"batch", batch}, {"expires", kRequestTime.count()}, {"idle_heartbeat", kHeartbeat.count()}};
  if (!m_large) body["max_bytes"] = kMostBytes;
  if (m_requests.empty()) m_heard = now;
  m_requests.push_back({m_number + 1, batch, now + kRequestTime + kHeartbeat});
  Send(now, "CONSUMER.MSG.NEXT." + m_target.stream + "." + ConsumerName(), 'p', body.dump());
}

void PullLoop::Again(Time now, const std::string& why) {
  m_broken = why;
  m_step = Step::Pause;
  m_due = now + m_pause;
  m_pause = std::clamp<std::chrono::milliseconds>(m_pause * 2, 100ms, kLongestPause);
  m_requests.clear();
}

void PullLoop::OnMessage(Time now, BusMessage message) {
  const std::size_t prefix = m_target.inbox.size() + 1;
  if (message.subject.compare(0, prefix, m_target.inbox + ".") != 0)
    return OnDelivered(now, std::move(message));
  const std::string tail = message.subject.substr(prefix);
  const std::string number = std::to_string(m_number);
  if (m_step == Step::Ask && tail == "i" + number) OnState(now, message);
  if (m_step == Step::Make && tail == "c" + number) OnMade(now, message);
  if (m_step == Step::Pull && tail.starts_with("p")) OnStatus(now, message);
}

// Whether it is the stream that was read before, as far as can be said now.
bool PullLoop::IsSame(Time now, const StreamState& state) {
  const bool other = !m_created.empty() && state.created != m_created;
  const bool fell = state.last < m_last;
  if (!fell) m_fellAt.reset();
  if (!other && fell) {
    if (!m_fellAt) m_fellAt = now;
    if (now - *m_fellAt < kFallen) {
      Again(now, "the end of the stream stands before what was read");
      return false;
    }
  }
  m_created = state.created;
  if (!other && !fell) return true;
  m_fellAt.reset();
  m_anew = other ? "the stream was made again" : "the stream has lost its end";
  m_step = Step::Anew;
  m_last = m_resume = 0;
  m_target.start = {};
  return false;
}

void PullLoop::OnState(Time now, const BusMessage& message) {
  StreamState state;
  std::string why;
  if (message.status) return Again(now, "no server of the engine has the stream now");
  if (!ReadStreamState(BytesOf(message), state, &why)) return Again(now, why);
  if (!IsSame(now, state)) return;
  if (m_target.start.at == EngineStart::At::Next && !m_resume) m_resume = state.last + 1;
  MakeConsumer(now);
}

void PullLoop::OnMade(Time now, const BusMessage& message) {
  std::string why;
  if (message.status) return Again(now, "no server of the engine makes a reader now");
  if (!ReadConsumerMade(BytesOf(message), &why)) return Again(now, why);
  m_step = Step::Pull;
  m_due = m_heard = now;
  m_broken.clear();
}

void PullLoop::OnStatus(Time now, const BusMessage& message) {
  const auto of = [&](const Request& request) {
    return message.subject == m_target.inbox + ".p" + std::to_string(request.number);
  };
  const auto at = std::find_if(m_requests.begin(), m_requests.end(), of);
  // Of an earlier consumer, or a request that had all its messages.
  if (at == m_requests.end()) return;
  m_heard = now;
  if (message.status == 100) {
    m_pause = 0ms;
    if (message.lastConsumer > m_ofConsumer) Again(now, "messages were dropped on the way");
    return;
  }
  const bool large =
      message.status == 409 && message.description == "Message Size Exceeds MaxBytes";
  if (!large && message.status != 408 && message.status != 404)
    return Again(now,
                 "the engine says: " + std::to_string(message.status) + " " + message.description);
  if (large && !at->fed) m_large = true;
  m_requests.erase(at);
}

// The engine serves the requests in their order.
void PullLoop::CountDown() {
  if (m_requests.empty()) return;
  m_requests.front().fed = true;
  if (--m_requests.front().left == 0) m_requests.pop_front();
}

void PullLoop::OnDelivered(Time now, BusMessage message) {
  const auto place = ReadDeliveredPlace(message.reply);
  if (m_step != Step::Pull || !place || place->consumer != ConsumerName()) return;
  if (place->ofConsumer != m_ofConsumer + 1 || place->sequence <= m_last)
    return Again(now, "messages were dropped on the way");
  m_ofConsumer++;
  m_heard = now;
  m_pause = 0ms;
  m_large = false;
  m_last = place->sequence;
  m_resume = m_last + 1;
  CountDown();
  m_bytes += message.body.size();
  if (!message.operation.empty()) message.body.clear();
  m_messages.push_back({std::move(message.subject), std::move(message.id), std::move(message.body),
                        place->sequence, place->arrived});
}
