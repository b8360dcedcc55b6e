// One trace record as it lies in a .trc file: see docs/formats.md.
//
// Shape    44 + L1 + L2 bytes, big-endian, unaligned, no padding.
// Owner    Borrows the bytes.
// Errors   None: the record must be whole, or MappedFile::kGuardBytes readable bytes must follow
//          its beginning. A text stops at its first NUL; the record goes on behind its full length.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/bytes.h"
#include "records/name_map.h"

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

class RawTrace {
 public:
  static constexpr std::size_t kFixedBytes = 44;  // a record with two empty texts

  explicit RawTrace(const std::uint8_t* record) : m_record(record) {}

  std::uint32_t SequenceNumber() const { return LoadBe32(m_record); }
  NameId MachineId() const { return LoadBe16(m_record + 4); }
  NameId AppId() const { return LoadBe16(m_record + 6); }
  NameId ComponentId() const { return LoadBe16(m_record + 8); }
  NameId CategoryId() const { return LoadBe16(m_record + 10); }
  std::uint32_t Date() const { return LoadBe32(m_record + 12); }
  std::uint32_t Time() const { return LoadBe32(m_record + 16); }
  std::uint64_t TicCount() const { return LoadBe64(m_record + 20); }
  NameId PidId() const { return LoadBe16(m_record + 28); }
  NameId TidId() const { return LoadBe16(m_record + 30); }
  int Attributes() const { return LoadBe16(m_record + 32); }
  NameId SourceFileId() const { return LoadBe16(m_record + 34); }
  std::uint32_t SourceLine() const { return LoadBe32(m_record + 36); }
  std::uint16_t TextLength() const { return LoadBe16(m_record + 40); }
  std::uint16_t StackLength() const { return LoadBe16(m_record + 42 + TextLength()); }
  // Up to their first NUL.
  std::string_view Text() const { return UpToNul(m_record + 42, TextLength()); }
  std::string_view Stack() const { return UpToNul(m_record + 44 + TextLength(), StackLength()); }
  std::size_t Size() const { return kFixedBytes + TextLength() + StackLength(); }

 private:
  static std::string_view UpToNul(const std::uint8_t* text, std::size_t length) {
    const auto* chars = reinterpret_cast<const char*>(text);
    return {chars, strnlen(chars, length)};
  }
  const std::uint8_t* m_record;
};

// Packed date and time of day, UTC. Ranges are the caller's: nothing is checked.
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
