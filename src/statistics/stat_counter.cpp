#include "statistics/stat_counter.h"

#include <cstring>

#include "records/record_fields.h"

namespace {

// Keys that are kept from piece to piece, so that most of them are known already.
constexpr std::size_t kKeptKeys = 65536, kKeptBytes = std::size_t{8} << 20;

}  // namespace

StatCounter::StatCounter(StatField field) : m_field(field) {
  constexpr std::size_t kSeverities = 4;
  if (field == StatField::Severity) m_places.resize(kSeverities);
  if (field < StatField::Thread) m_places.resize(kNameIds);
}

std::uint32_t StatCounter::NumberOfThread(const RawTrace& trace) {
  const std::uint64_t ids =
      std::uint64_t{trace.MachineId()} << 32 | std::uint64_t{trace.PidId()} << 16 | trace.TidId();
  KnownThread& known = m_threads[(ids * 0x9E3779B97F4A7C15U) >> (64 - kThreadBits)];
  if (known.ids == ids) return known.number;
  char key[StatKey::kBytes];
  known = {ids,
           NumberOfKey(StatKey::BytesOf({trace.MachineId(), trace.PidId(), trace.TidId()}, key))};
  return known.number;
}

std::uint32_t StatCounter::NumberOfKey(std::string_view key) {
  const std::uint64_t hash = KeyTable::HashOf(key);
  const std::optional<std::uint32_t> known = m_keys.Find(key, hash);
  return known ? *known : m_keys.Insert(key, hash);
}

void StatCounter::AddOther(const TraceEvent_i& event) {
  const std::vector<std::uint8_t> record = RecordOf(event);
  AddRecord(RawTrace(record.data()));
}

void StatCounter::AppendKey(std::uint32_t number, StatPart& part) const {
  if (m_field >= StatField::Thread && m_field != StatField::Severity) {
    part.bytes.append(m_keys[number]);
  } else if (m_field == StatField::Severity) {
    part.bytes.push_back(static_cast<char>(number));
  } else {
    const auto id = static_cast<NameId>(number);
    char bytes[sizeof id];
    std::memcpy(bytes, &id, sizeof id);
    part.bytes.append(bytes, sizeof bytes);
  }
}

StatPart StatCounter::Take() {
  StatPart part;
  part.entries.reserve(m_tallies.size());
  for (const Counted& counted : m_tallies) {
    const std::size_t place = part.bytes.size();
    AppendKey(counted.number, part);
    const std::size_t length = part.bytes.size() - place;
    const std::uint64_t hash = KeyTable::HashOf(std::string_view(part.bytes).substr(place));
    part.entries.push_back({hash, place, length, counted.tally});
    m_places[counted.number] = 0;
  }
  m_tallies.clear();
  if (m_keys.Size() > kKeptKeys || m_keys.Bytes() > kKeptBytes) {
    m_keys.Clear();
    m_places.clear();
    m_threads.fill({});
  }
  return part;
}
