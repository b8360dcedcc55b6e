#include "records/trace_event.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/place_in_table.h"
#include "support/trc_image.h"

namespace {

const NameMap kNames = {{1, {"host"}}, {2, {"shop"}},     {3, {"cart"}},    {4, {"sql"}},
                        {5, {"4711"}}, {6, {"thread 1"}}, {7, {"cart.cpp"}}};

TrcImage OneTrace() {
  return TrcImage("").Trace({.text = "zürich",
                             .stack = "main",
                             .count = 17,
                             .machine = 1,
                             .app = 2,
                             .component = 3,
                             .category = 4,
                             .tic = 0xFF00000000000001,
                             .pid = 5,
                             .tid = 6,
                             .attributes = 0x801A,
                             .file = 7,
                             .line = 4000000000});
}

TEST(TraceEvent, TheAccessorsReadTheRecord) {
  const GuardedBytes bytes = OneTrace().Guarded();
  const _TraceEvent_t event(bytes.At(1));
  const TraceEvent_i& trace = event;
  EXPECT_EQ(trace.GetSequenceNumber(), 17u);
  EXPECT_EQ(trace.GetDate(), PackDate(2026, 11, 21));
  EXPECT_EQ(trace.GetTime(), PackTime(9, 41, 7, 123));
  EXPECT_EQ(trace.GetText(), "zürich");
  EXPECT_EQ(trace.GetComponentId(), 3);
  EXPECT_EQ(trace.GetCategoryId(), 4);
  EXPECT_EQ(trace.GetMachineId(), 1);
  EXPECT_EQ(trace.GetAppId(), 2);
  EXPECT_EQ(trace.GetSourceFileId(), 7);
  EXPECT_EQ(trace.GetPidId(), 5);
  EXPECT_EQ(trace.GetTidId(), 6);
  EXPECT_EQ(trace.GetTicCount(), 0xFF00000000000001u);
  EXPECT_EQ(trace.GetSourceLine(), 4000000000u);
  EXPECT_EQ(trace.GetStack(), "main");
  EXPECT_EQ(trace.Record(), bytes.At(1));
}

TEST(TraceEvent, AttributesAreTheSixteenBitsAsANumberThatIsNotNegative) {
  const GuardedBytes bytes = OneTrace().Guarded();
  EXPECT_EQ(_TraceEvent_t(bytes.At(1)).GetAttributes(), 0x801A);
}

TEST(TraceEvent, ATicCountWithTheTopByteFFIsUnsigned) {
  const GuardedBytes bytes = OneTrace().Guarded();
  EXPECT_EQ(std::to_string(_TraceEvent_t(bytes.At(1)).GetTicCount()), "18374686479671623681");
}

TEST(TraceEvent, TextsStopAtANul) {
  const GuardedBytes bytes =
      TrcImage("")
          .Trace({.text = std::string("up\0x", 4), .stack = std::string("\0y", 2)})
          .Guarded();
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(event.GetText(), "up");
  EXPECT_EQ(event.GetStack(), "");
}

TEST(TraceEvent, NamesComeFromTheMapByTheirIds) {
  const GuardedBytes bytes = OneTrace().Guarded();
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(event.GetMachineName(kNames), "host");
  EXPECT_EQ(event.GetAppName(kNames), "shop");
  EXPECT_EQ(event.GetComponentName(kNames), "cart");
  EXPECT_EQ(event.GetCategoryName(kNames), "sql");
  EXPECT_EQ(event.GetPidName(kNames), "4711");
  EXPECT_EQ(event.GetTidName(kNames), "thread 1");
  EXPECT_EQ(event.GetSourceFileName(kNames), "cart.cpp");
}

TEST(TraceEvent, AnIdThatTheMapLacksHasAnEmptyNameAndIsNotInserted) {
  const GuardedBytes bytes = OneTrace().Guarded();
  const _TraceEvent_t event(bytes.At(1));
  const NameMap empty;
  EXPECT_EQ(event.GetMachineName(empty) + event.GetAppName(empty) + event.GetComponentName(empty) +
                event.GetCategoryName(empty) + event.GetPidName(empty) + event.GetTidName(empty) +
                event.GetSourceFileName(empty),
            "");
  EXPECT_TRUE(empty.empty());
}

TEST(TraceEvent, OneIdMayStandForAMachineAndForASourceFile) {
  const GuardedBytes bytes = TrcImage("").Trace({.machine = 7, .file = 7}).Guarded();
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(event.GetMachineName(kNames), "cart.cpp");
  EXPECT_EQ(event.GetSourceFileName(kNames), "cart.cpp");
}

TEST(TraceEvent, ANameEntryIsANameAndAMarkOf32Bits) {
  static_assert(std::is_same_v<decltype(NameEntry_t::name), std::string>);
  static_assert(std::is_same_v<decltype(NameEntry_t::written), std::uint32_t>);
  EXPECT_EQ(NameEntry_t().written, 0u);
}

TEST(TraceEvent, AnEventOverBytesHoldsOnePointerAndOwnsNothing) {
  static_assert(sizeof(_TraceEvent_t) == 2 * sizeof(void*));  // with that of its table
  const GuardedBytes bytes = OneTrace().Guarded();
  const std::string before(bytes.View().begin(), bytes.View().end());
  ReleaseTrace(new _TraceEvent_t(bytes.At(1)));
  EXPECT_EQ(std::string(bytes.View().begin(), bytes.View().end()), before);
}

TEST(TraceEvent, ReleaseDestroysTheEventAndNullIsNothing) {
  struct Watched : _TraceEvent_t {
    Watched(const std::uint8_t* record, bool& gone) : _TraceEvent_t(record), m_gone(gone) {}
    ~Watched() override { m_gone = true; }
    bool& m_gone;
  };
  const GuardedBytes bytes = OneTrace().Guarded();
  bool gone = false;
  TraceEvent_i* const event = new Watched(bytes.At(1), gone);
  ReleaseTrace(nullptr);
  EXPECT_FALSE(gone);
  event->Release();
  EXPECT_TRUE(gone);
}

TEST(TraceEvent, TheVirtualOperationsStandInTheOrderOfTheTable) {
  using T = TraceEvent_i;
  const std::size_t places[] = {
      PlaceInTable(&T::Release),       PlaceInTable(&T::GetSequenceNumber),
      PlaceInTable(&T::GetDate),       PlaceInTable(&T::GetTime),
      PlaceInTable(&T::GetText),       PlaceInTable(&T::GetComponentId),
      PlaceInTable(&T::GetCategoryId), PlaceInTable(&T::GetMachineId),
      PlaceInTable(&T::GetAppId),      PlaceInTable(&T::GetSourceFileId),
      PlaceInTable(&T::GetPidId),      PlaceInTable(&T::GetTidId),
      PlaceInTable(&T::GetAttributes), PlaceInTable(&T::GetTicCount),
      PlaceInTable(&T::GetSourceLine), PlaceInTable(&T::GetStack),
      PlaceInTable(&T::Record),
  };
  // The destructor takes the first two places.
  for (std::size_t at = 0; at < std::size(places); ++at) EXPECT_EQ(places[at], at + 2);
}

TEST(TraceEvent, CreateGivesAnEventWhoseAccessorsReturnItsFifteenArguments) {
  TraceEvent_i* const event =
      TraceEvent_i::Create(17, 1, 2, 3, 4, PackDate(2026, 1, 2), PackTime(3, 4, 5, 6),
                           0xFF00000000000001, 5, 6, 0x1801A, 7, 4000000000, "zürich", "main");
  EXPECT_EQ(event->GetSequenceNumber(), 17u);
  EXPECT_EQ(event->GetMachineId(), 1);
  EXPECT_EQ(event->GetAppId(), 2);
  EXPECT_EQ(event->GetComponentId(), 3);
  EXPECT_EQ(event->GetCategoryId(), 4);
  EXPECT_EQ(event->GetDate(), PackDate(2026, 1, 2));
  EXPECT_EQ(event->GetTime(), PackTime(3, 4, 5, 6));
  EXPECT_EQ(event->GetTicCount(), 0xFF00000000000001u);
  EXPECT_EQ(event->GetPidId(), 5);
  EXPECT_EQ(event->GetTidId(), 6);
  EXPECT_EQ(event->GetAttributes(), 0x801A);
  EXPECT_EQ(event->GetSourceFileId(), 7);
  EXPECT_EQ(event->GetSourceLine(), 4000000000u);
  EXPECT_EQ(event->GetText(), "zürich");
  EXPECT_EQ(event->GetStack(), "main");
  ASSERT_NE(event->Record(), nullptr);
  EXPECT_EQ(RawTrace(event->Record()).Size(), 44u + 7 + 4);
  event->Release();
}

TEST(TraceEvent, TextsLongerThan65535BytesAreCutBeforeACharacter) {
  const std::string text(65534, 'x');
  TraceEvent_i* const event = TraceEvent_i::Create(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0,
                                                   text + "ü", std::string(65536, 'y'));
  EXPECT_EQ(event->GetText(), text);
  EXPECT_EQ(event->GetStack(), std::string(65535, 'y'));
  EXPECT_EQ(RawTrace(event->Record()).Size(), 44u + 65534 + 65535);
  event->Release();
}

TEST(TraceEvent, TheAttributesLabelCoversExactlyTheFiveBits) {
  EXPECT_EQ(AttributesToLabel(0), "");
  EXPECT_EQ(AttributesToLabel(1), "Info");
  EXPECT_EQ(AttributesToLabel(2), "Warn");
  EXPECT_EQ(AttributesToLabel(4), "Error");
  EXPECT_EQ(AttributesToLabel(8), "Developer");
  EXPECT_EQ(AttributesToLabel(16), "Verbose");
  EXPECT_EQ(AttributesToLabel(1 | 8 | 16), "Info, Developer, Verbose");
  EXPECT_EQ(AttributesToLabel(31), "Info, Warn, Error, Developer, Verbose");
  EXPECT_EQ(AttributesToLabel(0x7FFFFFE0), "");
  EXPECT_EQ(AttributesToLabel(-32), "");
}

}  // namespace
