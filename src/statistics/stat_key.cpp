#include "statistics/stat_key.h"

#include <cstring>

std::string_view StatKey::BytesOf(const StatThread& thread, char* to) {
  const NameId ids[] = {thread.machine, thread.process, thread.thread};
  static_assert(sizeof ids == kBytes);
  std::memcpy(to, ids, sizeof ids);
  return {to, sizeof ids};
}

std::string_view StatKey::Of(const RawTrace& trace) {
  NameId id = 0;
  switch (m_field) {
    case StatField::Pattern:
      return m_pattern.Of(trace.Text());
    case StatField::Thread:
      return BytesOf({trace.MachineId(), trace.PidId(), trace.TidId()}, m_bytes);
    case StatField::Severity:
      m_bytes[0] = static_cast<char>(SeverityOf(trace.Attributes()));
      return {m_bytes, 1};
    case StatField::Component:
      id = trace.ComponentId();
      break;
    case StatField::Category:
      id = trace.CategoryId();
      break;
    case StatField::Application:
      id = trace.AppId();
      break;
  }
  std::memcpy(m_bytes, &id, sizeof id);
  return {m_bytes, sizeof id};
}
