#include "quor/client/config_link.h"

#include <set>

#include "base/fail_with.h"

namespace {

constexpr std::chrono::milliseconds kDeadline{5000};

}  // namespace

std::shared_ptr<ConfigLink> ConfigLink::To(const std::string& host, std::string* why) {
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<ConfigLink>> links;
  const std::lock_guard lock(mutex);
  std::erase_if(links, [](const auto& entry) { return entry.second.expired(); });
  if (auto link = links[host].lock()) return link->m_link.Await(kDeadline, why) ? link : nullptr;
  auto link = std::make_shared<ConfigLink>(host);
  if (!link->m_link.Start(kDeadline, why)) return nullptr;
  links[host] = link;
  return link;
}

bool ConfigLink::Ask(quor::wire::Request request, quor::wire::Response* response,
                     std::string* why) {
  std::unique_lock lock(m_mutex);
  const std::uint32_t id = ++m_lastId;
  request.set_id(id);
  m_questions[id].request = request;
  m_link.Post([request](Connection* connection) {
    if (connection) connection->Send(FrameType::Request, request);  // else OnUp does it
  });
  m_answered.wait_for(lock, kDeadline, [&] { return m_questions[id].answer.has_value(); });
  const std::optional<quor::wire::Response> answer = std::move(m_questions[id].answer);
  m_questions.erase(id);
  if (!answer) return FailWith(why, "no answer in time");
  if (answer->error() != quor::wire::ERROR_NONE) return FailWith(why, answer->text());
  if (response) *response = *answer;
  return true;
}

bool ConfigLink::Open(const std::string& app, quor::wire::Response* response, std::string* why) {
  quor::wire::Request request;
  {
    const std::lock_guard lock(m_mutex);
    if (m_open[app]++ == 0) {
      request.mutable_open_app()->set_name(app);
    } else {
      request.mutable_get_app()->set_name(app);
    }
  }
  if (Ask(request, response, why)) return true;
  Close(app);
  return false;
}

void ConfigLink::Close(const std::string& app) {
  quor::wire::Request request;
  {
    const std::lock_guard lock(m_mutex);
    if (--m_open[app] > 0) return;
    m_open.erase(app);
    request.set_id(++m_lastId);
  }
  request.mutable_close_app()->set_name(app);
  m_link.Post([request](Connection* connection) {
    if (connection) connection->Send(FrameType::Request, request);
  });
}

void ConfigLink::OnUp(Connection& connection, const quor::wire::Welcome&) {
  m_up = true;
  const std::lock_guard lock(m_mutex);
  // Applications whose first question is still open are opened by that question.
  std::set<std::string> asked;
  for (const auto& [id, question] : m_questions)
    if (!question.answer && question.request.has_open_app())
      asked.insert(question.request.open_app().name());
  for (const auto& [app, handles] : m_open) {
    if (asked.contains(app)) continue;
    quor::wire::Request request;
    request.set_id(++m_lastId);
    request.mutable_open_app()->set_name(app);
    connection.Send(FrameType::Request, request);
  }
  for (const auto& [id, question] : m_questions)
    if (!question.answer) connection.Send(FrameType::Request, question.request);
}

void ConfigLink::OnFrame(const Frame& frame) {
  quor::wire::Response response;
  if (frame.type != FrameType::Response ||
      !response.ParseFromArray(frame.body.data(), static_cast<int>(frame.body.size())))
    return m_link.Break("a frame that a configuration does not expect");
  const std::lock_guard lock(m_mutex);
  const auto question = m_questions.find(response.id());
  if (question == m_questions.end()) return;  // nobody waits for the answer any more
  question->second.answer = std::move(response);
  m_answered.notify_all();
}
