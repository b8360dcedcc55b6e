#include "input/merged_names.h"

#include <utility>

#include "records/raw_trace.h"
#include "records/record_layout.h"

bool MergedNames::Translate(std::size_t file, const NameMap& names, NameId id, NameId& to) {
  if (m_known.size() <= file) m_known.resize(file + 1);
  std::vector<std::int32_t>& known = m_known[file];
  if (known.empty()) known.resize(kNameIds, kNew);
  if (known[id] == kNew) {
    const auto entry = names.find(id);
    const auto fresh = static_cast<std::int32_t>(m_next);
    if (entry == names.end()) {
      known[id] = m_nameless.try_emplace(id, fresh).first->second;
    } else {
      known[id] = m_byText.try_emplace(entry->second.name, fresh).first->second;
    }
    if (known[id] == fresh) {
      if (m_next == kNameIds) return false;
      if (entry != names.end()) m_names[static_cast<NameId>(m_next)].name = entry->second.name;
      ++m_next;
    }
  }
  to = static_cast<NameId>(known[id]);
  return true;
}

void MergedNames::Forget(std::size_t file) {
  if (file < m_known.size()) m_known[file].clear();
}

void MergedNames::Forget(std::size_t file, NameId id) {
  if (file < m_known.size() && !m_known[file].empty()) m_known[file][id] = kNew;
}

bool TranslateIds(MergedNames& to, std::size_t file, const NameMap& names, std::uint8_t* record) {
  for (const std::size_t at : kTraceIds) {
    NameId id = LoadId<NameId>(record + at);
    if (!to.Translate(file, names, id, id)) return false;
    StoreBe16(record + at, static_cast<std::uint16_t>(id));
  }
  return true;
}

TraceEvent_i* Renumbered(TraceEvent_i* trace, const NewId& newId) {
  if (!trace) return nullptr;
  const std::uint8_t* const record = trace->Record();
  std::vector<std::uint8_t> own(record, record + RawTrace(record).Size());
  for (const std::size_t at : kTraceIds) {
    const NameId id = newId(LoadId<NameId>(own.data() + at));
    StoreBe16(own.data() + at, static_cast<std::uint16_t>(id));
  }
  ReleaseTrace(trace);
  return new OwnedTraceEvent_t(std::move(own));
}
