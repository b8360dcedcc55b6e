// The one description of records, beside the bytes that TrcImage writes without it.
#include "records/record_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "full_trace.h"
#include "records/name_record.h"
#include "records/record_fields.h"
#include "support/trc_image.h"

namespace {

// The bytes of the one record of an image, without its tag.
std::vector<std::uint8_t> BodyOf(const TrcImage& image) {
  const std::string bytes = image.Bytes();
  return {bytes.begin() + 1, bytes.end()};
}

template <class Id>
RecordFieldsOf<Id> SameFields() {
  return {.count = 0x81828384,
          .machine = Id{0x8001},
          .app = Id{0x8002},
          .component = Id{0x8003},
          .category = Id{0x8004},
          .date = 0x91929394,
          .time = 0xA1A2A3A4,
          .ticCount = 0xFF01020304050607,
          .pid = Id{0x8005},
          .tid = Id{0x8006},
          .attributes = 0xF123,
          .sourceFile = Id{0x8007},
          .sourceLine = 0xB1B2B3B4,
          .text = "text",
          .stack = "stack"};
}

TEST(NameIds, NoSpaceConvertsIntoAnother) {
  EXPECT_FALSE((std::is_convertible_v<AppNameId, HubNameId>));
  EXPECT_FALSE((std::is_convertible_v<HubNameId, AppNameId>));
  EXPECT_FALSE((std::is_convertible_v<AppNameId, NameId>));
  EXPECT_FALSE((std::is_convertible_v<NameId, AppNameId>));
  EXPECT_FALSE((std::is_convertible_v<HubNameId, NameId>));
  EXPECT_FALSE((std::is_convertible_v<NameId, HubNameId>));
}

TEST(NameIds, ASetHasWhatWasAddedAndNotRemoved) {
  IdSet<HubNameId> set;
  set.Add(HubNameId{0});
  set.Add(HubNameId{65535});
  EXPECT_TRUE(set.Has(HubNameId{0}));
  EXPECT_TRUE(set.Has(HubNameId{65535}));
  EXPECT_FALSE(set.Has(HubNameId{1}));
  set.Remove(HubNameId{0});
  EXPECT_FALSE(set.Has(HubNameId{0}));
  set.Clear();
  EXPECT_FALSE(set.Has(HubNameId{65535}));
}

TEST(RecordLayout, AStoredTraceIsWhatTheImageHasInEverySpaceOfIds) {
  const std::vector<std::uint8_t> wanted = BodyOf(TrcImage("").Trace(FullTrace()));
  std::vector<std::uint8_t> made;
  MakeRecord(SameFields<NameId>(), made);
  EXPECT_EQ(made, wanted);
  MakeRecord(SameFields<AppNameId>(), made);
  EXPECT_EQ(made, wanted);
  MakeRecord(SameFields<HubNameId>(), made);
  EXPECT_EQ(made, wanted);
}

TEST(RecordLayout, OtherIdsTakeThePlacesOfTheSevenAndNoOthers) {
  TraceFields fields = FullTrace();
  std::vector<std::uint8_t> record = BodyOf(TrcImage("").Trace(fields));
  StoreIds<HubNameId>(record.data(), {HubNameId{1}, HubNameId{2}, HubNameId{3}, HubNameId{4},
                                      HubNameId{5}, HubNameId{6}, HubNameId{7}});
  fields.machine = 1, fields.app = 2, fields.component = 3, fields.category = 4;
  fields.pid = 5, fields.tid = 6, fields.file = 7;
  EXPECT_EQ(record, BodyOf(TrcImage("").Trace(fields)));
}

TEST(RecordLayout, TheIdsOfATraceComeInTheOrderOfTheirPlaces) {
  const std::vector<std::uint8_t> record = BodyOf(TrcImage("").Trace(FullTrace()));
  const std::array<NameId, 7> ids = RawTrace(record.data()).Ids().All();
  ASSERT_EQ(std::size(kTraceIds), ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    EXPECT_EQ(ids[i], 0x8001 + i);
    EXPECT_EQ(LoadId<NameId>(record.data() + kTraceIds[i]), ids[i]);
  }
}

TEST(RecordLayout, TheBytesOfTheIdsChangeWithEachIdAndWithNothingElse) {
  const std::vector<std::uint8_t> record = BodyOf(TrcImage("").Trace(FullTrace()));
  const TraceIdBytes bytes(record.data());
  for (std::size_t at = 0; at < TraceAt::kTextLength; ++at) {
    std::vector<std::uint8_t> changed = record;
    changed[at] ^= 1;
    const bool isId = std::any_of(std::begin(kTraceIds), std::end(kTraceIds),
                                  [at](std::size_t id) { return at == id || at == id + 1; });
    EXPECT_EQ(TraceIdBytes(changed.data()) == bytes, !isId) << at;
  }
}

TEST(RecordLayout, AStoredNameIsWhatTheImageHas) {
  const std::string image = TrcImage("").Name(0x8123, "web").Name(7, "").Bytes();
  std::vector<std::uint8_t> made;
  AppendNameRecord(made, AppNameId{0x8123}, "web");
  AppendNameRecord(made, AppNameId{7}, "");
  EXPECT_EQ(std::string(made.begin(), made.end()), image);
  const RawHubName name(made.data() + kTagBytes);
  EXPECT_EQ(name.NamedId(), HubNameId{0x8123});
  EXPECT_EQ(name.Text(), "web");
  EXPECT_EQ(name.Size(), 7u);
}

TEST(RecordLayout, ATraceIsWholeAtItsOwnLengthOnly) {
  std::vector<std::uint8_t> record = BodyOf(TrcImage("").Trace(FullTrace()));
  const std::size_t whole = record.size();
  for (std::size_t bytes = 0; bytes < whole; ++bytes) {
    // A vector of its own, so that a sanitizer sees a read after it.
    const std::vector<std::uint8_t> cut(record.begin(), record.begin() + static_cast<long>(bytes));
    EXPECT_EQ(WholeTraceBytes(cut), 0u) << bytes;
    EXPECT_FALSE(IsWholeTrace(cut)) << bytes;
  }
  EXPECT_EQ(WholeTraceBytes(record), whole);
  EXPECT_TRUE(IsWholeTrace(record));
  record.push_back(0);
  EXPECT_EQ(WholeTraceBytes(record), whole);
  EXPECT_FALSE(IsWholeTrace(record));
}

TEST(RecordLayout, ANameIsWholeFromItsOwnLengthOn) {
  std::vector<std::uint8_t> record = BodyOf(TrcImage("").Name(7, "web"));
  const std::size_t whole = record.size();
  for (std::size_t bytes = 0; bytes < whole; ++bytes) {
    const std::vector<std::uint8_t> cut(record.begin(), record.begin() + static_cast<long>(bytes));
    EXPECT_EQ(WholeNameBytes(cut), 0u) << bytes;
  }
  record.push_back(0);
  EXPECT_EQ(WholeNameBytes(record), whole);
}

TEST(RecordLayout, NoTraceIsLongerThanTheLongest) {
  const std::string text(70000, 't');
  std::vector<std::uint8_t> record;
  MakeRecord<NameId>({.text = text, .stack = text}, record);
  EXPECT_EQ(record.size(), kTraceBytesMax);
  EXPECT_TRUE(IsWholeTrace(record));
}

}  // namespace
