// One trace record in a file, a ring or a stream: see record_layout.h.
//
// Shape    The record after its tag. The type says which space the ids belong to: RawTrace for a
//          document or file, RawAppTrace for an application, RawHubTrace for a service.
// Owner    Borrows the bytes.
// Errors   None: the record must be whole, or MappedFile::kGuardBytes readable bytes must follow
//          its beginning. A NUL ends a text early; the record still has its full length.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "records/record_layout.h"

// Bits of the attribute word.
enum TraceAttribute : int {
  kAttributeInfo = 1,
  kAttributeWarn = 2,
  kAttributeError = 4,
  kAttributeDeveloper = 8,
  kAttributeVerbose = 16,
};
constexpr int kSeverityMask = 7;
constexpr std::uint32_t kNoSequenceNumber = 0xFFFFFFFF;

// The seven ids of a record, in the order of the record.
template <class Id>
struct TraceIdsOf {
  Id machine, app, component, category, pid, tid, sourceFile;

  std::array<Id, 7> All() const {
    return {machine, app, component, category, pid, tid, sourceFile};
  }
  bool operator==(const TraceIdsOf& other) const {
    static_assert(sizeof(TraceIdsOf) == 14, "no padding to compare");
    return std::memcmp(this, &other, sizeof other) == 0;
  }
};

// The same as bytes, in three words, for a fast comparison: equal words mean equal ids.
struct TraceIdBytes {
  TraceIdBytes() = default;
  explicit TraceIdBytes(const std::uint8_t* record)
      : head(LoadBe64(record + TraceAt::kMachine)),
        threads(LoadBe32(record + TraceAt::kPid)),
        file(LoadBe16(record + TraceAt::kSourceFile)) {}
  bool operator==(const TraceIdBytes&) const = default;
  // A number in which equal ids are equal and others mostly differ, the top bits most of all.
  std::uint64_t Hash() const {
    constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15u;
    return (head * kGolden ^ (std::uint64_t{threads} << 16 | file)) * kGolden;
  }

  std::uint64_t head = 0;  // machine, application, component, category
  std::uint32_t threads = 0;
  std::uint16_t file = 0;
};

template <class Id>
class RawTraceOf {
 public:
  explicit RawTraceOf(const std::uint8_t* record) : m_record(record) {}

  std::uint32_t SequenceNumber() const { return LoadBe32(m_record + TraceAt::kCount); }
  Id MachineId() const { return LoadId<Id>(m_record + TraceAt::kMachine); }
  Id AppId() const { return LoadId<Id>(m_record + TraceAt::kApp); }
  Id ComponentId() const { return LoadId<Id>(m_record + TraceAt::kComponent); }
  Id CategoryId() const { return LoadId<Id>(m_record + TraceAt::kCategory); }
  std::uint32_t Date() const { return LoadBe32(m_record + TraceAt::kDate); }
  std::uint32_t Time() const { return LoadBe32(m_record + TraceAt::kTime); }
  std::uint64_t TicCount() const { return LoadBe64(m_record + TraceAt::kTicCount); }
  Id PidId() const { return LoadId<Id>(m_record + TraceAt::kPid); }
  Id TidId() const { return LoadId<Id>(m_record + TraceAt::kTid); }
  int Attributes() const { return LoadBe16(m_record + TraceAt::kAttributes); }
  Id SourceFileId() const { return LoadId<Id>(m_record + TraceAt::kSourceFile); }
  std::uint32_t SourceLine() const { return LoadBe32(m_record + TraceAt::kSourceLine); }
  std::uint16_t TextLength() const { return LoadBe16(m_record + TraceAt::kTextLength); }
  std::uint16_t StackLength() const { return LoadBe16(AfterText()); }
  // Up to the first NUL.
  std::string_view Text() const { return UpToNul(m_record + TraceAt::kText, TextLength()); }
  std::string_view Stack() const { return UpToNul(AfterText() + kTextLengthBytes, StackLength()); }
  std::size_t Size() const { return kTraceFixedBytes + TextLength() + StackLength(); }
  TraceIdBytes IdBytes() const { return TraceIdBytes(m_record); }
  TraceIdsOf<Id> Ids() const {
    return {MachineId(), AppId(), ComponentId(), CategoryId(), PidId(), TidId(), SourceFileId()};
  }

 private:
  const std::uint8_t* AfterText() const { return m_record + TraceAt::kText + TextLength(); }
  const std::uint8_t* m_record;
};
using RawTrace = RawTraceOf<NameId>;
using RawAppTrace = RawTraceOf<AppNameId>;
using RawHubTrace = RawTraceOf<HubNameId>;

// Packed date and time of day, UTC. The caller must check the ranges.
constexpr std::uint32_t PackDate(unsigned year, unsigned month, unsigned day) {
  return (year << 11) | (month << 6) | day;
}
constexpr std::uint32_t PackTime(unsigned hour, unsigned minute, unsigned second, unsigned ms) {
  return (hour << 25) | (minute << 18) | (second << 11) | ms;
}
struct UnpackedDate {
  unsigned year, month, day;
};
struct UnpackedTime {
  unsigned hour, minute, second, ms;
};
constexpr UnpackedDate UnpackDate(std::uint32_t date) {
  return {date >> 11, (date >> 6) & 31, date & 63};
}
constexpr UnpackedTime UnpackTime(std::uint32_t time) {
  return {time >> 25, (time >> 18) & 127, (time >> 11) & 127, time & 2047};
}
