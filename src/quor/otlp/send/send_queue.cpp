#include "quor/otlp/send/send_queue.h"

#include <algorithm>
#include <iterator>

#include "quor/http/client/pack.h"

namespace {

std::uint64_t All(const OutWeight& weight) {
  return weight.traces + weight.lost;
}

}  // namespace

void SendQueue::Add(OutRequest request) {
  Request& waiting = m_waiting.emplace_back();
  waiting.kind = request.kind;
  waiting.body = PackGzip(request.body);
  waiting.isPacked = !waiting.body.empty();
  if (!waiting.isPacked) waiting.body = std::move(request.body);
  waiting.messages = request.messages;
  waiting.weight = request.weight;
  waiting.number = m_added++;
  m_bytes += waiting.body.size();
  while (m_bytes > m_limits.bytes && m_waiting.size() > (m_isUnderWay ? 1u : 0u)) Drop();
}

void SendQueue::Drop() {
  const auto oldest = std::next(m_waiting.begin(), m_isUnderWay ? 1 : 0);
  const Request dropped = std::move(*oldest);
  m_waiting.erase(oldest);
  m_bytes -= dropped.body.size();
  JudgedAnswer why;
  why.reason = "the collector took too little";
  LoseOf(dropped, All(dropped.weight), why);
}

void SendQueue::LoseOf(const Request& request, std::uint64_t traces, const JudgedAnswer& why) {
  if (traces > 0) m_lose({request.number, traces, why.reason, why.words});
}

const SendQueue::Request* SendQueue::Next(Time now) {
  if (m_isUnderWay || m_waiting.empty() || now < m_resume) return nullptr;
  m_isUnderWay = true;
  return &m_waiting.front();
}

void SendQueue::Answer(const HttpResult& result, Time now, std::time_t date) {
  m_isUnderWay = false;
  const JudgedAnswer answer = JudgeAnswer(result, date);
  if (answer.kind == JudgedAnswer::Kind::Again) return Wait(answer, now);
  m_pause = m_limits.pause;
  m_trouble.clear();
  const Request request = std::move(m_waiting.front());
  m_waiting.pop_front();
  m_bytes -= request.body.size();
  TakeAnswer(request, answer);
}

void SendQueue::TakeAnswer(const Request& request, const JudgedAnswer& answer) {
  if (answer.kind == JudgedAnswer::Kind::Lost) return LoseOf(request, All(request.weight), answer);
  std::uint64_t lost = 0;
  // It says how many messages, and not which: a span stands for two traces.
  if (answer.rejected >= request.messages)
    lost = All(request.weight);
  else if (answer.rejected > 0)
    lost = std::min(All(request.weight),
                    answer.rejected * (request.kind == OutRequest::Kind::Spans ? 2 : 1));
  m_taken += request.weight.traces - std::min(lost, request.weight.traces);
  LoseOf(request, lost, answer);
}

void SendQueue::Wait(const JudgedAnswer& answer, Time now) {
  using std::chrono::milliseconds;
  const auto half = m_pause.count() / 2;
  const milliseconds own(half + static_cast<long>(m_random() % static_cast<unsigned>(half + 1)));
  m_pause = std::min(m_pause * 2, m_limits.longestPause);
  const milliseconds asked =
      std::min(answer.after.value_or(std::chrono::seconds(0)), m_limits.longestAsked);
  m_resume = now + (answer.after ? std::max(asked, milliseconds(0)) : own);
  m_trouble = answer.reason;
  if (!answer.words.empty()) m_trouble += ": " + answer.words;
}

std::optional<SendQueue::Time> SendQueue::WakeAt() const {
  if (m_isUnderWay || m_waiting.empty()) return std::nullopt;
  return m_resume;
}
