#include "quor/client/stream/source_filter_asker.h"

#include <utility>

using Kind = SourceFilterState::Kind;

void SourceFilterAsker::Set(const std::string& text) {
  {
    const std::lock_guard lock(m_mutex);
    m_text = text;
    ++m_version;
    m_state = {.kind = text.empty() ? Kind::None : Kind::Asked};
  }
  m_link->Post([this](Connection* connection) {
    if (connection) Ask(*connection);
  });
}

SourceFilterState SourceFilterAsker::GetState() const {
  const std::lock_guard lock(m_mutex);
  return m_state;
}

void SourceFilterAsker::SetState(SourceFilterState state, unsigned version) {
  const std::lock_guard lock(m_mutex);
  if (version == m_version && !m_text.empty()) m_state = std::move(state);
}

void SourceFilterAsker::OnUp(Connection& connection, const quor::wire::Welcome& welcome) {
  m_isKnown = welcome.filters();
  {
    const std::lock_guard lock(m_mutex);
    if (m_text.empty()) return;
  }
  Ask(connection);
}

void SourceFilterAsker::OnDown() {
  m_asked.clear();
  const std::lock_guard lock(m_mutex);
  if (!m_text.empty()) m_state = {.kind = Kind::Asked};
}

void SourceFilterAsker::Ask(Connection& connection) {
  quor::wire::Request request;
  unsigned version = 0;
  {
    const std::lock_guard lock(m_mutex);
    version = m_version;
    request.mutable_set_filter()->set_text(m_text);
  }
  if (!m_isKnown) return SetState({.kind = Kind::Unknown}, version);
  if (!request.set_filter().text().empty()) m_ledger.ExpectWithheld();
  request.set_id(++m_lastRequest);
  m_asked.push_back({request.id(), version});
  connection.Send(FrameType::Request, request);
}

bool SourceFilterAsker::Takes(const quor::wire::Response& response) {
  if (m_asked.empty() || m_asked.front().request != response.id()) return false;
  const unsigned version = m_asked.front().version;
  m_asked.pop_front();
  if (response.error() == quor::wire::ERROR_NONE)
    SetState({.kind = Kind::InForce}, version);
  else
    SetState({Kind::Refused, response.text(), response.place(), response.length()}, version);
  return true;
}
