#include "quor/client/questions.h"

#include <utility>

std::uint32_t Questions::Add(quor::wire::Request request) {
  const std::uint32_t id = NextId();
  request.set_id(id);
  m_open[id].request = std::move(request);
  return id;
}

const quor::wire::Request* Questions::TakeUnsent(std::uint32_t id) {
  const auto question = m_open.find(id);
  const bool unsent = question != m_open.end() && !std::exchange(question->second.sent, true);
  return unsent ? &question->second.request : nullptr;
}

void Questions::SendAll(const std::function<void(const quor::wire::Request&)>& send) {
  for (auto& [id, question] : m_open) {
    if (question.answer) continue;
    question.sent = true;
    send(question.request);
  }
}

bool Questions::WillOpen(const std::string& app) const {
  for (const auto& [id, question] : m_open)
    if (!question.answer && question.request.has_open_app() &&
        question.request.open_app().name() == app)
      return true;
  return false;
}

void Questions::Answer(quor::wire::Response response) {
  const auto question = m_open.find(response.id());
  if (question != m_open.end()) question->second.answer = std::move(response);
}

bool Questions::IsAnswered(std::uint32_t id) const {
  const auto question = m_open.find(id);
  return question != m_open.end() && question->second.answer.has_value();
}

std::optional<quor::wire::Response> Questions::Take(std::uint32_t id) {
  const auto question = m_open.find(id);
  if (question == m_open.end()) return std::nullopt;
  std::optional<quor::wire::Response> answer = std::move(question->second.answer);
  m_open.erase(question);
  return answer;
}
