#include "quor/relay/reader/held_messages.h"

#include <algorithm>

void RelayMessage::Skip(std::uint64_t serial) {
  if (serial <= From()) return;
  const std::uint64_t front = serial - From();
  skipped = std::min(front, envelope.delivered);
  skippedLost = front - skipped;
}

bool HeldMessages::Contradicts(std::uint64_t from, std::uint64_t to) const {
  const auto behind = m_messages.upper_bound(from);
  if (behind != m_messages.end() && behind->first < to) return true;
  if (behind == m_messages.begin()) return false;
  const auto& [begins, held] = *std::prev(behind);
  return held.message.envelope.serial > from &&
         !(begins == from && held.message.envelope.serial == to);
}

void HeldMessages::Hold(RelayMessage message, Time now) {
  m_bytes += message.Bytes();
  m_times.insert(now);
  const std::uint64_t from = message.Begins();
  m_messages.emplace(from, Held{std::move(message), now});
}

std::optional<RelayMessage> HeldMessages::TakeAt(std::uint64_t serial) {
  const auto first = m_messages.begin();
  if (first == m_messages.end() || first->first != serial) return {};
  RelayMessage message = std::move(first->second.message);
  m_bytes -= message.Bytes();
  m_times.erase(m_times.find(first->second.since));
  m_messages.erase(first);
  return message;
}

EngineMoment HeldMessages::OldestArrival() const {
  EngineMoment oldest = EngineMoment::max();
  for (const auto& [from, held] : m_messages) oldest = std::min(oldest, held.message.arrived);
  return oldest;
}
