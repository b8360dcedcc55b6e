#include "sample/old_sample.h"

#include <chrono>

namespace {

std::uint64_t FileTimeOf(const TraceEvent_i& trace) {
  using namespace std::chrono;
  constexpr sys_days kDayZero{year{1601} / 1 / 1};
  const UnpackedDate date = UnpackDate(trace.GetDate());
  const UnpackedTime time = UnpackTime(trace.GetTime());
  const sys_days day = year{static_cast<int>(date.year)} / month{date.month} / date.day;
  const milliseconds ms = day - kDayZero + hours(time.hour) + minutes(time.minute) +
                          seconds(time.second) + milliseconds(time.ms);
  return static_cast<std::uint64_t>(ms.count()) * 10'000;
}

std::uint8_t OldSeverity(int attributes) {
  switch (attributes & kSeverityMask) {
    case kAttributeInfo:
      return 0;
    case kAttributeWarn:
      return 1;
    case kAttributeError:
      return 2;
    default:
      return 3;
  }
}

std::uint8_t OldAttribute(int attributes) {
  const bool developer = (attributes & kAttributeDeveloper) != 0;
  const bool verbose = (attributes & kAttributeVerbose) != 0;
  if (developer && verbose) return 32;
  return developer ? 8 : verbose ? 4 : 0;
}

std::uint16_t NumberOf(const std::string& name) {
  return static_cast<std::uint16_t>(std::stoul(name));
}

}  // namespace

OldSample::OldSample() {
  for (auto& owners : m_owners) owners.fill(kNobody);
}

std::string_view OldSample::Encode(const TraceEvent_i& trace, const NameMap& names) {
  m_bytes.clear();
  const std::uint8_t machine = KeyOf(OldName::Machine, trace.GetMachineId(), names);
  const std::uint8_t app = KeyOf(OldName::App, trace.GetAppId(), names);
  const std::uint8_t component = KeyOf(OldName::Component, trace.GetComponentId(), names);
  const std::uint8_t category = KeyOf(OldName::Category, trace.GetCategoryId(), names);
  const std::uint8_t file = KeyOf(OldName::SourceFile, trace.GetSourceFileId(), names);
  Put(kOldTagTrace, 1);
  Put(trace.GetSequenceNumber(), 4);
  Put(FileTimeOf(trace), 8);
  Put(component, 2);
  Put(category, 2);
  Put(file, 2);
  Put(machine, 1);
  Put(app, 1);
  Put(OldSeverity(trace.GetAttributes()), 1);
  Put(OldAttribute(trace.GetAttributes()), 1);
  Put(trace.GetSourceLine(), 4);
  Put(NumberOf(trace.GetPidName(names)), 2);
  Put(NumberOf(trace.GetTidName(names)), 2);
  Put(trace.GetTicCount(), 8);
  Put(0, 8);  // not used by any reader
  m_bytes += trace.GetText();
  Put(0, 1);
  return m_bytes;
}

// A key is one byte. Ids with the same key replace each other by new name records.
std::uint8_t OldSample::KeyOf(OldName kind, NameId id, const NameMap& names) {
  const auto key = static_cast<std::uint8_t>(id);
  int& owner = m_owners[static_cast<std::size_t>(kind)][key];
  if (owner != id) {
    owner = id;
    Put(static_cast<std::uint8_t>(kind), 1);
    Put(key, kind == OldName::Machine || kind == OldName::App ? 1 : 2);
    m_bytes += NameOf(names, id);
    Put(0, 1);
  }
  return key;
}

void OldSample::Put(std::uint64_t value, int bytes) {
  for (; bytes > 0; --bytes, value >>= 8) m_bytes.push_back(static_cast<char>(value & 0xFF));
}
