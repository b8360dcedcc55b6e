#include "records/raw_trace.h"

#include <gtest/gtest.h>

#include <sstream>

#include "full_trace.h"
#include "support/trc_image.h"

namespace {

// A record whose fields all differ, at any distance from an aligned address.
TrcImage FullRecord(int shift) {
  TrcImage image("");
  for (int byte = 0; byte < shift; ++byte) image.Raw(0xEE);
  image.Trace(FullTrace());
  return image;
}

std::string Dump(const RawTrace& trace) {
  std::ostringstream out;
  out << std::hex << trace.SequenceNumber() << ' ' << trace.MachineId() << ' ' << trace.AppId()
      << ' ' << trace.ComponentId() << ' ' << trace.CategoryId() << ' ' << trace.Date() << ' '
      << trace.Time() << ' ' << trace.TicCount() << ' ' << trace.PidId() << ' ' << trace.TidId()
      << ' ' << trace.Attributes() << ' ' << trace.SourceFileId() << ' ' << trace.SourceLine()
      << ' ' << trace.TextLength() << ' ' << trace.Text() << ' ' << trace.StackLength() << ' '
      << trace.Stack() << ' ' << trace.Size();
  return out.str();
}

TEST(RawTrace, AllSeventeenFieldsDecodeAtEvenAndOddAddresses) {
  for (int shift = 0; shift < 9; ++shift) {
    const GuardedBytes bytes = FullRecord(shift).Guarded();
    EXPECT_EQ(Dump(RawTrace(bytes.At(static_cast<std::size_t>(shift) + 1))),
              "81828384 8001 8002 8003 8004 91929394 a1a2a3a4 ff01020304050607 8005 8006 f123 8007 "
              "b1b2b3b4 4 text 5 stack 35")
        << shift;
  }
}

TEST(RawTrace, ARecordWithoutTextsHas44BytesAndTwoEmptyTexts) {
  const GuardedBytes bytes = TrcImage("").Trace("").Guarded();
  const RawTrace trace(bytes.At(1));
  EXPECT_EQ(trace.Size(), 44u);
  EXPECT_EQ(trace.Text(), "");
  EXPECT_EQ(trace.Stack(), "");
}

TEST(RawTrace, ATextStopsAtANulButTheRecordStepsOverTheWholeField) {
  const GuardedBytes bytes =
      TrcImage("")
          .Trace({.text = std::string("up\0down", 7), .stack = std::string("a\0b", 3)})
          .Guarded();
  const RawTrace trace(bytes.At(1));
  EXPECT_EQ(trace.Text(), "up");
  EXPECT_EQ(trace.TextLength(), 7);
  EXPECT_EQ(trace.Stack(), "a");
  EXPECT_EQ(trace.Size(), 44u + 7 + 3);
}

TEST(RawTrace, TextsOf65535BytesAreReadWhole) {
  const std::string longest(65535, 'x');
  const GuardedBytes bytes = TrcImage("").Trace({.text = longest, .stack = longest}).Guarded();
  const RawTrace trace(bytes.At(1));
  EXPECT_EQ(trace.Text(), longest);
  EXPECT_EQ(trace.Stack(), longest);
  EXPECT_EQ(trace.Size() + 1, MappedFile::kGuardBytes);
}

TEST(RawTrace, DatesAndTimesArePackedByShifts) {
  EXPECT_EQ(PackDate(2026, 11, 21), 2026u << 11 | 11u << 6 | 21u);
  EXPECT_EQ(PackTime(9, 41, 7, 123), 9u << 25 | 41u << 18 | 7u << 11 | 123u);
  const UnpackedDate date = UnpackDate(PackDate(2026, 12, 31));
  EXPECT_EQ(date.year, 2026u);
  EXPECT_EQ(date.month, 12u);
  EXPECT_EQ(date.day, 31u);
  const UnpackedTime time = UnpackTime(PackTime(23, 59, 58, 999));
  EXPECT_EQ(time.hour, 23u);
  EXPECT_EQ(time.minute, 59u);
  EXPECT_EQ(time.second, 58u);
  EXPECT_EQ(time.ms, 999u);
}

}  // namespace
