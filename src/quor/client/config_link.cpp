#include "quor/client/config_link.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/fail_with.h"

namespace {

std::chrono::milliseconds LeftUntil(ConfigLink::Clock::time_point until) {
  const auto left = until - ConfigLink::Clock::now();
  return std::max(std::chrono::ceil<std::chrono::milliseconds>(left), {});
}

}  // namespace

std::shared_ptr<ConfigLink> ConfigLink::To(const std::string& host, Clock::time_point until,
                                           std::string* why, quor::wire::Role role) {
  static std::mutex mutex;
  static std::map<std::pair<std::string, quor::wire::Role>, std::weak_ptr<ConfigLink>> links;
  const std::lock_guard lock(mutex);
  std::erase_if(links, [](const auto& entry) { return entry.second.expired(); });
  if (auto link = links[{host, role}].lock())
    return link->m_link.Await(LeftUntil(until), why) ? link : nullptr;
  auto link = std::make_shared<ConfigLink>(host, role);
  if (!link->m_link.Start(LeftUntil(until), why)) return nullptr;
  links[{host, role}] = link;
  return link;
}

bool ConfigLink::Ask(quor::wire::Request request, Clock::time_point until,
                     quor::wire::Response* response, std::string* why) {
  std::unique_lock lock(m_mutex);
  return AskLocked(lock, std::move(request), until, response, why);
}

bool ConfigLink::AskLocked(std::unique_lock<std::mutex>& lock, quor::wire::Request request,
                           Clock::time_point until, quor::wire::Response* response,
                           std::string* why) {
  const std::uint32_t id = m_questions.Add(std::move(request));
  m_link.Post([this, id](Connection* connection) {
    if (!connection) return;  // OnUp does it
    const std::lock_guard guard(m_mutex);
    if (const quor::wire::Request* const unsent = m_questions.TakeUnsent(id))
      connection->Send(FrameType::Request, *unsent);
  });
  m_answered.wait_until(lock, until, [&] { return m_questions.IsAnswered(id); });
  const std::optional<quor::wire::Response> answer = m_questions.Take(id);
  if (!answer) m_heard = false;
  if (!answer) return FailWith(why, "no answer in time");
  if (response) *response = *answer;
  return answer->error() == quor::wire::ERROR_NONE || FailWith(why, answer->text());
}

// One lock for the count and the question: otherwise a connection that begins in between would open
// the application, and the question would open it once more.
bool ConfigLink::Open(const std::string& app, Clock::time_point until,
                      quor::wire::Response* response, std::string* why) {
  quor::wire::Request request;
  std::unique_lock lock(m_mutex);
  if (m_open[app]++ == 0) {
    request.mutable_open_app()->set_name(app);
  } else {
    request.mutable_get_app()->set_name(app);
  }
  if (AskLocked(lock, std::move(request), until, response, why)) return true;
  lock.unlock();
  Close(app);
  return false;
}

void ConfigLink::Close(const std::string& app) {
  quor::wire::Request request;
  {
    const std::lock_guard lock(m_mutex);
    if (--m_open[app] > 0) return;
    m_open.erase(app);
    request.set_id(m_questions.NextId());
  }
  request.mutable_close_app()->set_name(app);
  m_link.Post([request](Connection* connection) {
    if (connection) connection->Send(FrameType::Request, request);
  });
}

void ConfigLink::OnUp(Connection& connection, const quor::wire::Welcome&) {
  m_up = m_heard = true;
  const std::lock_guard lock(m_mutex);
  for (const auto& [app, handles] : m_open) {
    if (m_questions.WillOpen(app)) continue;
    quor::wire::Request request;
    request.set_id(m_questions.NextId());
    request.mutable_open_app()->set_name(app);
    connection.Send(FrameType::Request, request);
  }
  m_questions.SendAll([&connection](const quor::wire::Request& request) {
    connection.Send(FrameType::Request, request);
  });
}

void ConfigLink::OnFrame(const Frame& frame) {
  quor::wire::Response response;
  if (frame.type != FrameType::Response ||
      !response.ParseFromArray(frame.body.data(), static_cast<int>(frame.body.size())))
    return m_link.Break("a frame that a configuration does not expect");
  m_heard = true;
  const std::lock_guard lock(m_mutex);
  m_questions.Answer(std::move(response));
  m_answered.notify_all();
}
