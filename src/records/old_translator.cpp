#include "records/old_translator.h"

#include <chrono>

#include "base/quor_str.h"
#include "base/text.h"
#include "records/record_fields.h"

namespace {

int AttributesOf(const OldTrace& trace) {
  constexpr int kSeverities[] = {kAttributeInfo, kAttributeWarn, kAttributeError};
  const std::uint8_t severity = trace.Severity();
  const int bits = severity < std::size(kSeverities) ? kSeverities[severity] : 0;
  switch (trace.Attribute()) {
    case 4:
      return bits | kAttributeVerbose;
    case 8:
    case 16:
      return bits | kAttributeDeveloper;
    case 32:
      return bits | kAttributeDeveloper | kAttributeVerbose;
    default:
      return bits;
  }
}

}  // namespace

void OldTranslator::Define(OldName kind, std::uint8_t key, std::string_view name) {
  m_ids[static_cast<std::size_t>(kind)][key] = Intern(name);
}

_TraceEvent_t OldTranslator::Translate(const OldTrace& trace, std::string_view text) {
  const PackedMoment moment = PackFileTime(trace.FileTime());
  const NameId pid = InternNumber(trace.Pid());  // before the thread's: ids come in order of use
  const NameId tid = InternNumber(trace.Tid());
  if (text.size() > kLongestText) ++m_cutTexts;
  MakeRecord<NameId>({.count = trace.SequenceNumber(),
                      .machine = IdOf(OldName::Machine, trace.Machine()),
                      .app = IdOf(OldName::App, trace.App()),
                      .component = IdOf(OldName::Component, trace.Component()),
                      .category = IdOf(OldName::Category, trace.Category()),
                      .date = moment.date,
                      .time = moment.time,
                      .ticCount = trace.TicCount(),
                      .pid = pid,
                      .tid = tid,
                      .attributes = static_cast<std::uint16_t>(AttributesOf(trace)),
                      .sourceFile = IdOf(OldName::SourceFile, trace.SourceFile()),
                      .sourceLine = trace.SourceLine(),
                      .text = text,
                      .stack = {}},
                     m_record);
  return _TraceEvent_t(m_record.data());
}

// A file cannot store a longer name, so only that much is kept.
NameId OldTranslator::Intern(std::string_view name) {
  if (name.size() > kLongestText) ++m_cutNames;
  name = CutUtf8(name, kLongestText);
  const auto known = m_idByName.find(name);
  if (known != m_idByName.end()) return known->second;
  if (m_names.size() == kNameIds) {
    ++m_lostNames;
    return 0;
  }
  const auto id = static_cast<NameId>(m_names.size());
  const auto entry = m_names.emplace_hint(m_names.end(), id, NameEntry_t{std::string(name), 0});
  m_idByName.emplace(entry->second.name, id);
  return id;
}

NameId OldTranslator::InternNumber(std::uint16_t number) {
  std::uint32_t& known = m_numberIds[number];
  if (known == 0) known = 1u + Intern(QuorStr::NumToStr(unsigned{number}));
  return static_cast<NameId>(known - 1);
}

PackedMoment PackFileTime(std::uint64_t fileTime) {
  using namespace std::chrono;
  constexpr std::uint64_t kUnitsPerMs = 10'000, kMsPerDay = 86'400'000;
  constexpr sys_days kDayZero{year{1601} / 1 / 1};
  if (fileTime >> 63) return {0, 0};
  const std::uint64_t ms = fileTime / kUnitsPerMs;
  const year_month_day date(kDayZero + days(ms / kMsPerDay));
  const auto ofDay = static_cast<unsigned>(ms % kMsPerDay);
  return {PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                   static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day())),
          PackTime(ofDay / 3'600'000, ofDay / 60'000 % 60, ofDay / 1000 % 60, ofDay % 1000)};
}
