#include "quor/relay/serial_intervals.h"

#include <algorithm>

std::vector<SerialRange> SerialIntervals::Cover(SerialRange message) {
  std::vector<SerialRange> fresh;
  std::uint64_t at = std::max(message.from, m_base);
  auto next = m_ahead.upper_bound(at);
  if (next != m_ahead.begin()) at = std::max(at, std::prev(next)->second);
  for (; at < message.to; ++next) {
    const std::uint64_t to = next == m_ahead.end() ? message.to : std::min(message.to, next->first);
    if (to > at) fresh.push_back({at, to});
    if (next == m_ahead.end()) break;
    at = std::max(at, next->second);
  }
  for (const SerialRange& range : fresh) m_ahead[range.from] = range.to;
  if (message.to > message.from) m_high = std::max(m_high, message.to);
  Join();
  return fresh;
}

// Ranges that touch become one, and one that touches the base is settled.
void SerialIntervals::Join() {
  for (auto range = m_ahead.begin(); range != m_ahead.end();) {
    const auto next = std::next(range);
    if (range->first <= m_base) {
      m_base = std::max(m_base, range->second);
      range = m_ahead.erase(range);
    } else if (next != m_ahead.end() && next->first <= range->second) {
      range->second = std::max(range->second, next->second);
      m_ahead.erase(next);
    } else {
      range = next;
    }
  }
}

SerialRange SerialIntervals::FirstHole() const {
  const std::uint64_t to = m_ahead.empty() ? High() : m_ahead.begin()->first;
  return {m_base, to};
}

std::uint64_t SerialIntervals::GiveUpFirstHole() {
  const SerialRange hole = FirstHole();
  if (hole.Size() == 0) return 0;
  m_givenUp[hole.from] = hole.to;
  if (m_givenUp.size() > kGivenUpMax) m_givenUp.erase(m_givenUp.begin());
  m_base = hole.to;
  Join();
  return hole.Size();
}

void SerialIntervals::Reach(std::uint64_t serial) {
  m_high = std::max(m_high, serial);
}

bool SerialIntervals::WasGivenUp(std::uint64_t serial) const {
  const auto behind = m_givenUp.lower_bound(serial);
  return behind != m_givenUp.begin() && serial <= std::prev(behind)->second;
}
