// One name record in a file, a segment or a stream: see record_layout.h.
//
// Owner    RawName borrows the bytes; the writers write into memory of their caller.
// Errors   None. RawName: the record must be whole, or MappedFile::kGuardBytes readable bytes must
//          follow its beginning. Writers REQUIRE a text of at most kLongestText bytes.
// Threads  Pure.
#pragma once

#include <vector>

#include "records/record_layout.h"

// The record after its tag.
template <class Id>
class RawNameOf {
 public:
  explicit RawNameOf(const std::uint8_t* record) : m_record(record) {}

  Id NamedId() const { return LoadId<Id>(m_record + NameAt::kId); }
  std::uint16_t TextLength() const { return LoadBe16(m_record + NameAt::kLength); }
  std::string_view Text() const { return UpToNul(m_record + NameAt::kText, TextLength()); }
  std::size_t Size() const { return kNameBodyBytes + TextLength(); }

 private:
  const std::uint8_t* m_record;
};
using RawName = RawNameOf<NameId>;
using RawAppName = RawNameOf<AppNameId>;
using RawHubName = RawNameOf<HubNameId>;

// Write the head of the body, the body, or the record with its tag. Return the bytes written.
template <class Id>
std::size_t StoreNameHead(std::uint8_t* to, Id id, std::size_t textBytes) {
  StoreId(to + NameAt::kId, id);
  StoreBe16(to + NameAt::kLength, static_cast<std::uint16_t>(textBytes));
  return kNameBodyBytes;
}
template <class Id>
std::size_t StoreNameBody(std::uint8_t* to, Id id, std::string_view text) {
  const std::size_t head = StoreNameHead(to, id, text.size());
  if (!text.empty()) std::memcpy(to + head, text.data(), text.size());
  return head + text.size();
}
template <class Id>
std::size_t StoreNameRecord(std::uint8_t* to, Id id, std::string_view text) {
  *to = kTagName;
  return kTagBytes + StoreNameBody(to + kTagBytes, id, text);
}
// Appends the record with its tag.
template <class Id>
void AppendNameRecord(std::vector<std::uint8_t>& to, Id id, std::string_view text) {
  const std::size_t at = to.size();
  to.resize(at + kNameRecordBytes + text.size());
  StoreNameRecord(to.data() + at, id, text);
}
