#include "quor/client/stream/name_mapper.h"

NameMapper::NameMapper(NameMap& names)
    : m_names(names), m_stream(std::make_unique<Table>()), m_own(std::make_unique<Table>()) {
  m_stream->fill(0);
  m_own->fill(0);
  for (const auto& [id, entry] : names) m_ids.emplace(entry.name, id);
  if (names.contains(kOverflowId)) m_overflowId = 0;  // the id has another meaning here
}

NameId NameMapper::IdOf(std::string_view text) {
  if (const auto known = m_ids.find(text); known != m_ids.end()) return known->second;
  while (m_nextId < kOverflowId && m_names.contains(static_cast<NameId>(m_nextId))) ++m_nextId;
  if (m_nextId >= kOverflowId || m_textBytes + text.size() > kTextBytesMax) {
    if (m_overflowId != 0) m_names.try_emplace(m_overflowId, NameEntry_t{kOverflowName, 0});
    return m_overflowId;
  }
  const auto id = static_cast<NameId>(m_nextId++);
  m_textBytes += text.size();
  m_ids.emplace(text, id);
  m_names.emplace(id, NameEntry_t{std::string(text), 0});
  return id;
}

void NameMapper::Map(LiveBatch& batch, std::size_t index) {
  Table& table = batch.IsOwn() ? *m_own : *m_stream;
  if (index == 0) {
    m_nextName = 0;
    if (batch.IsFirstOfStream()) m_stream->fill(0);
  }
  const std::vector<LiveBatch::Name>& names = batch.Names();
  for (; m_nextName < names.size() && names[m_nextName].before <= index; ++m_nextName)
    EntryOf(table, names[m_nextName].id) = IdOf(names[m_nextName].text);
  if (index == batch.Traces()) return;
  std::uint8_t* const record = batch.Record(index);
  for (const std::size_t at : kTraceIds)
    StoreId(record + at, EntryOf(table, LoadId<HubNameId>(record + at)));
}
