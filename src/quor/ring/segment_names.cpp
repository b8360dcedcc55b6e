#include "quor/ring/segment_names.h"

#include <algorithm>
#include <cstring>

#include "records/name_record.h"

bool SegmentNames::ReadNew(std::vector<SegmentName>& names) {
  if (m_broken) return false;
  const std::uint32_t used = m_segment.Header()->nameBytesUsed.load(std::memory_order_acquire);
  m_broken = used > m_segment.Layout().nameBytes || used < m_read;
  while (!m_broken && m_read < used) {
    const std::uint8_t* const body = m_segment.Names() + m_read;
    std::uint8_t head[kNameBodyBytes];
    m_broken = used - m_read < sizeof head;
    if (m_broken) break;
    std::memcpy(head, body, sizeof head);
    const RawAppName name(head);
    const AppNameId id = name.NamedId();
    const std::uint16_t length = name.TextLength();
    m_broken = used - m_read - sizeof head < length || m_seen.Has(id);
    if (m_broken) break;
    m_seen.Add(id);
    names.push_back({id, std::string(reinterpret_cast<const char*>(body) + sizeof head, length)});
    m_read += static_cast<std::uint32_t>(sizeof head) + length;
  }
  return !m_broken;
}

bool SegmentPointsReader::ReadNew(std::vector<SegmentPointNames>& points) {
  const std::uint32_t count = m_segment.Header()->pointCount.load(std::memory_order_acquire);
  if (count > m_segment.Layout().pointCapacity || count < m_read) return false;
  for (const std::uint32_t end = std::min(count, m_read + kAtOnce); m_read < end; ++m_read) {
    const volatile SegmentPoint& point = m_segment.Points()[m_read];
    points.push_back({m_read, point.component, point.category, Settings(m_read)});
  }
  return true;
}

std::uint32_t SegmentPointsReader::Settings(std::uint32_t point) const {
  return m_segment.Points()[point].settings.load(std::memory_order_relaxed);
}

void SegmentPointsReader::SetSettings(std::uint32_t point, std::uint32_t settings) {
  m_segment.Points()[point].settings.store(settings, std::memory_order_relaxed);
}

void SegmentPointsReader::SetDefault(std::uint32_t settings) {
  m_segment.Header()->defaultSettings.store(settings, std::memory_order_relaxed);
}
