#include "quor/engine/jetstream/nats_asker.h"

#include <charconv>

#include "base/fail_with.h"

std::unique_ptr<NatsAsker> NatsAsker::Make(NatsLink& link, Acked acked, std::string* why) {
  std::unique_ptr<NatsAsker> asker(new NatsAsker(link, std::move(acked)));
  auto* const self = asker.get();
  const auto heard = [self](BusMessage message) { self->OnAnswer(std::move(message)); };
  asker->m_answers = NatsSubscription::Make(link, link.Inbox() + ".*", heard, why);
  if (!asker->m_answers) return nullptr;
  return asker;
}

NatsAsker::~NatsAsker() = default;

std::string NatsAsker::AckSubject(std::uint64_t token) const {
  return m_link.Inbox() + ".a" + std::to_string(token);
}

void NatsAsker::OnAnswer(BusMessage message) {
  const std::size_t at = m_link.Inbox().size() + 1;
  if (message.subject.size() < at + 2) return;
  const char* const end = message.subject.data() + message.subject.size();
  std::uint64_t number = 0;
  const auto read = std::from_chars(message.subject.data() + at + 1, end, number);
  if (read.ec != std::errc() || read.ptr != end) return;
  if (message.subject[at] == 'a') return m_acked(number, message);
  std::lock_guard lock(m_mutex);
  const auto question = m_questions.find(number);
  if (question == m_questions.end()) return;
  question->second.answer = std::move(message);
  m_answered.notify_all();
}

bool NatsAsker::Refuse(const std::string& what) {
  std::lock_guard lock(m_mutex);
  bool some = false;
  for (auto& [number, question] : m_questions)
    if (what.find("\"" + question.subject + "\"") != what.npos) {
      question.refused = what;
      some = true;
    }
  m_answered.notify_all();
  return some;
}

std::optional<BusMessage> NatsAsker::Ask(const std::string& subject, Bytes question,
                                         std::chrono::milliseconds deadline,
                                         const std::uint64_t* revision, std::string* why) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  std::unique_lock lock(m_mutex);
  const std::uint64_t number = ++m_number;
  auto& asked = m_questions[number];
  asked.subject = subject;
  lock.unlock();
  const std::string reply = m_link.Inbox() + ".q" + std::to_string(number);
  const bool sent = m_link.Send(subject, reply, question, "", revision, why);
  lock.lock();
  if (sent)
    m_answered.wait_until(lock, end, [&] { return asked.answer || !asked.refused.empty(); });
  const Question done = std::move(asked);
  m_questions.erase(number);
  if (!sent) return std::nullopt;
  if (!done.refused.empty()) return FailWith(why, done.refused, std::nullopt);
  if (!done.answer) return FailWith(why, "no answer came in time", std::nullopt);
  return done.answer;
}
