// From the bytes of an older file to those of its conversion.
#include "records/old_conversion.h"

#include <gtest/gtest.h>

#include "records/old_translator.h"
#include "support/old_trc_image.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

class OldConversionTest : public testing::Test {
 protected:
  // The bytes of the new file.
  std::string Converted(const OldTrcImage& image) {
    const std::string path = m_temp.File("new.trc");
    const GuardedBytes old = image.Guarded();
    TrcWriter writer;
    EXPECT_TRUE(writer.Create(path));
    m_result = ConvertOldTrc(old.View(), writer, [this](std::uint64_t position) {
      m_positions.push_back(position);
      return m_positions.size() < m_cancelAt;
    });
    EXPECT_TRUE(m_result.written);
    EXPECT_TRUE(writer.Finish());
    return ReadAll(path);
  }
  // One old trace as a new one with two names: the numbers of its process and thread.
  std::string ConvertedTrace(const OldTraceFields& trace) {
    return Converted(OldTrcImage().Trace(trace));
  }
  static std::string Expected(const TraceFields& trace) {
    return TrcImage().Name(0, "0").Trace(trace).Bytes();
  }

  TempDir m_temp;
  OldConversion m_result;
  std::vector<std::uint64_t> m_positions;
  std::size_t m_cancelAt = 1000;
};

TEST_F(OldConversionTest, AFileWithoutRecordsBecomesAHeaderOf16Bytes) {
  EXPECT_EQ(Converted(OldTrcImage()), TrcImage().Bytes());
  EXPECT_EQ(m_result.position, 12u);
}

TEST_F(OldConversionTest, EveryFieldOfATraceArrives) {
  OldTrcImage old;
  old.Machine(9, "web").App(8, "shop").Component(7, "Net").Category(6, "Send");
  old.SourceFile(5, "a.c").Trace({.text = "up",
                                  .count = 0xFFFFFFFF,
                                  .component = 7,
                                  .category = 6,
                                  .file = 5,
                                  .machine = 9,
                                  .app = 8,
                                  .severity = 2,
                                  .attribute = 32,
                                  .line = 0x01020304,
                                  .pid = 65535,
                                  .tid = 12,
                                  .tic = 0xFF00000000000001});
  TrcImage expected;
  expected.Name(0, "web").Name(1, "shop").Name(2, "Net").Name(3, "Send").Name(5, "65535");
  expected.Name(6, "12").Name(4, "a.c");  // in the order in which a trace names them
  expected.Trace({.text = "up",
                  .count = 0xFFFFFFFF,
                  .machine = 0,
                  .app = 1,
                  .component = 2,
                  .category = 3,
                  .tic = 0xFF00000000000001,
                  .pid = 5,
                  .tid = 6,
                  .attributes = 4 | 8 | 16,
                  .file = 4,
                  .line = 0x01020304});
  EXPECT_EQ(Converted(old), expected.Bytes());
  EXPECT_EQ(m_result.traces, 1u);
  EXPECT_EQ(m_result.position, old.Size());
}

TEST_F(OldConversionTest, ANameRecordThatNoTraceRefersToIsInternedButDoesNotReachTheNewFile) {
  OldTrcImage old;
  old.Machine(1, "unused").Machine(2, "web").Trace({.text = "up", .machine = 2});
  TrcImage expected;
  // What the other keys name is the first entry, so that it is a name that is used all the same.
  expected.Name(1, "web").Name(0, "unused").Name(2, "0");
  expected.Trace({.text = "up", .machine = 1, .pid = 2, .tid = 2});
  EXPECT_EQ(Converted(old), expected.Bytes());

  OldTrcImage all;
  all.Machine(1, "web").App(1, "web").Component(1, "web").Category(1, "web").SourceFile(1, "web");
  all.Machine(2, "unused");
  all.Trace({.component = 1, .category = 1, .file = 1, .machine = 1, .app = 1});
  EXPECT_EQ(Converted(all),
            TrcImage().Name(0, "web").Name(2, "0").Trace({.pid = 2, .tid = 2}).Bytes());
}

TEST_F(OldConversionTest, TwoMachinesOfTheSameTextHaveOneIdForBoth) {
  OldTrcImage old;
  old.Machine(1, "web").Machine(2, "web").Trace({.machine = 1}).Trace({.count = 2, .machine = 2});
  const TrcImage expected = TrcImage()
                                .Name(0, "web")
                                .Name(1, "0")
                                .Trace({.pid = 1, .tid = 1})
                                .Trace({.pid = 1, .tid = 1});
  EXPECT_EQ(Converted(old), expected.Bytes());
}

TEST_F(OldConversionTest, OneTextHasOneIdAcrossKindsAndNumbers) {
  OldTrcImage old;
  old.Machine(1, "web").App(1, "web").Component(1, "77").Category(1, "web").SourceFile(1, "web");
  old.Trace(
      {.component = 1, .category = 1, .file = 1, .machine = 1, .app = 1, .pid = 77, .tid = 77});
  EXPECT_EQ(
      Converted(old),
      TrcImage().Name(0, "web").Name(1, "77").Trace({.component = 1, .pid = 1, .tid = 1}).Bytes());
}

TEST_F(OldConversionTest, ProcessIsInternedBeforeThread) {
  EXPECT_EQ(ConvertedTrace({.pid = 5, .tid = 4}),
            TrcImage().Name(0, "5").Name(1, "4").Trace({.pid = 0, .tid = 1}).Bytes());
}

TEST_F(OldConversionTest, KeysOfTwoBytesNameTheSameEntryWhenTheirLowBytesAgree) {
  OldTrcImage old;
  old.Machine(0, "web").App(0, "web").SourceFile(0x0201, "web").Category(0x0001, "web");
  old.Component(0x0001, "first").Component(0x0101, "second");
  old.Trace({.component = 0x0001, .category = 0xFF01, .file = 0x0001});
  EXPECT_EQ(Converted(old), TrcImage()
                                .Name(0, "web")
                                .Name(2, "second")
                                .Name(3, "0")
                                .Trace({.component = 2, .pid = 3, .tid = 3})
                                .Bytes());
}

TEST_F(OldConversionTest, AKeyThatNoNameRecordHasDefinedYetNamesTheEntryOfId0) {
  OldTrcImage old;
  old.Trace({.machine = 3, .pid = 8, .tid = 9})
      .Machine(3, "web")
      .Trace({.count = 2, .machine = 3, .pid = 8, .tid = 9});
  EXPECT_EQ(Converted(old), TrcImage()
                                .Name(0, "8")
                                .Name(1, "9")
                                .Trace({.pid = 0, .tid = 1})
                                .Name(2, "web")
                                .Trace({.machine = 2, .pid = 0, .tid = 1})
                                .Bytes());
}

TEST_F(OldConversionTest, AKeyThatIsDefinedAgainHasItsNewNameFromThereOn) {
  OldTrcImage old;
  old.App(0, "a").Machine(1, "a").Trace({.machine = 1}).Machine(1, "b");
  old.Trace({.count = 2, .machine = 1});
  EXPECT_EQ(Converted(old), TrcImage()
                                .Name(0, "a")
                                .Name(1, "0")
                                .Trace({.pid = 1, .tid = 1})
                                .Name(2, "b")
                                .Trace({.machine = 2, .pid = 1, .tid = 1})
                                .Bytes());
}

TEST_F(OldConversionTest, Severities0To2AreInfoWarnErrorAndAnOldSeverityOf3GivesNoBit) {
  const std::pair<unsigned, std::uint16_t> table[] = {{0, 1}, {1, 2}, {2, 4}, {3, 0}, {255, 0}};
  for (const auto& [severity, bits] : table) {
    EXPECT_EQ(ConvertedTrace({.severity = severity}), Expected({.attributes = bits})) << severity;
  }
}

TEST_F(OldConversionTest, OldAttributesBecomeDeveloperAndVerbose) {
  for (unsigned attribute = 0; attribute < 256; ++attribute) {
    std::uint16_t bits = 0;
    if (attribute == 4 || attribute == 32) bits |= 16;
    if (attribute == 8 || attribute == 16 || attribute == 32) bits |= 8;
    EXPECT_EQ(ConvertedTrace({.severity = 3, .attribute = attribute}),
              Expected({.attributes = bits}))
        << attribute;
  }
}

TEST_F(OldConversionTest, TextsAreNotConvertedWhateverTheirEncoding) {
  EXPECT_EQ(ConvertedTrace({.text = "caf\xE9 \xFF"}), Expected({.text = "caf\xE9 \xFF"}));
}

TEST_F(OldConversionTest, ATextThatIsLongerThanARecordHoldsIsCutAndCounted) {
  const std::string longest(65535, 'x');
  EXPECT_EQ(ConvertedTrace({.text = longest}), Expected({.text = longest}));
  EXPECT_EQ(m_result.cutTexts, 0u);
  EXPECT_EQ(ConvertedTrace({.text = longest + "y"}), Expected({.text = longest}));
  EXPECT_EQ(m_result.cutTexts, 1u);
  const std::string even(65534, 'x');
  EXPECT_EQ(ConvertedTrace({.text = even + "\xC3\xA9"}), Expected({.text = even}));
}

TEST_F(OldConversionTest, ANameThatIsLongerThanARecordHoldsIsCut) {
  OldTrcImage old;
  old.Machine(0, std::string(70000, 'm')).Trace("");
  EXPECT_EQ(
      Converted(old),
      TrcImage().Name(0, std::string(65535, 'm')).Name(1, "0").Trace({.pid = 1, .tid = 1}).Bytes());
}

TEST_F(OldConversionTest, ATraceThatTheEndCutsHasZerosForWhatIsMissing) {
  // Count, time and the component's key are there.
  OldTrcImage old;
  old.App(0, "zero").Component(1, "Net").Trace({.text = "up", .component = 1, .severity = 2});
  old.Cut(3 + 8 + 24);
  EXPECT_EQ(Converted(old), TrcImage()
                                .Name(0, "zero")
                                .Name(1, "Net")
                                .Name(2, "0")
                                .Trace({.component = 1, .pid = 2, .tid = 2})
                                .Bytes());
  EXPECT_EQ(m_result.damage.cutAt, 12u + 7 + 7);
}

TEST_F(OldConversionTest, NamesThatAreCutAreCounted) {
  OldTrcImage old;
  old.Machine(0, std::string(65536, 'm')).App(0, std::string(65535, 'a')).Trace("");
  Converted(old);
  EXPECT_EQ(m_result.cutNames, 1u);
  EXPECT_FALSE(m_result.damage.Any());
}

TEST_F(OldConversionTest, BytesThatAreNoRecordAreLeftOutAndCounted) {
  const OldTrcImage old = OldTrcImage().Raw(6).Trace("").Raw(200).Raw(10);
  EXPECT_EQ(Converted(old), Expected({}));
  EXPECT_EQ(m_result.damage.skippedBytes, 3u);
}

TEST_F(OldConversionTest, CancelLeavesAShortenedFileThatIsWhole) {
  OldTrcImage old;
  old.Machine(0, "web");
  for (unsigned i = 1; i <= 3000; ++i) old.Trace({.count = i});
  m_cancelAt = 2;
  TrcImage expected;
  expected.Name(0, "web").Name(1, "0");
  for (int i = 0; i < 2047; ++i) expected.Trace({.pid = 1, .tid = 1});
  EXPECT_EQ(Converted(old), expected.Bytes());
  EXPECT_TRUE(m_result.cancelled);
  EXPECT_EQ(m_result.traces, 2047u);
  EXPECT_EQ(m_positions.size(), 2u);
}

TEST_F(OldConversionTest, AFullDiskShowsAtTheHeaderAtATraceOrAtTheEnd) {
  for (const unsigned traces : {0u, 1u, 5000u}) {
    OldTrcImage old;
    for (unsigned i = 0; i < traces; ++i) old.Trace("some text");
    const GuardedBytes bytes = old.Guarded();
    TrcWriter writer;
    ASSERT_TRUE(writer.Create("/dev/full"));
    const OldConversion result = ConvertOldTrc(bytes.View(), writer, [](auto) { return true; });
    EXPECT_LT(result.traces, 100u);
    EXPECT_FALSE(writer.Finish() && result.written) << traces;
    EXPECT_EQ(result.written, traces < 5000) << "the buffer holds the first traces";
  }
}

TEST_F(OldConversionTest, NamesAfterThe65536thHaveTheId0AndAreCounted) {
  OldTranslator translator;
  for (int i = 0; i < 65536; ++i) translator.Define(OldName::Machine, 1, "m" + std::to_string(i));
  EXPECT_EQ(translator.Names().size(), 65536u);
  EXPECT_EQ(translator.LostNames(), 0u);
  translator.Define(OldName::Machine, 1, "m65536");
  translator.Define(OldName::App, 1, "m65535");  // known
  EXPECT_EQ(translator.LostNames(), 1u);
  EXPECT_EQ(translator.Names().size(), 65536u);
  std::uint8_t body[OldTrace::kFixedBytes] = {};
  body[18] = body[19] = 1;
  const _TraceEvent_t trace = translator.Translate(OldTrace(body), "");
  EXPECT_EQ(trace.GetMachineId(), 0);
  EXPECT_EQ(trace.GetAppId(), 65535);
  EXPECT_EQ(trace.GetPidId(), 0);
}

TEST(OldTime, AFileTimeIsPackedAsUtcWhateverTheZone) {
  EXPECT_EQ(PackFileTime(kOldMoment).date, PackDate(2026, 11, 21));
  EXPECT_EQ(PackFileTime(kOldMoment).time, PackTime(9, 41, 7, 123));
  EXPECT_EQ(PackFileTime(kOldMoment + 9999).time, PackTime(9, 41, 7, 123)) << "part of a ms";
}

TEST(OldTime, TheFirstTheLeapAndTheLastDaysAreRight) {
  constexpr std::uint64_t kDay = 864'000'000'000;
  EXPECT_EQ(PackFileTime(0).date, PackDate(1601, 1, 1));
  EXPECT_EQ(PackFileTime(0).time, 0u);
  EXPECT_EQ(PackFileTime(kDay - 1).time, PackTime(23, 59, 59, 999));
  EXPECT_EQ(PackFileTime(116'444'736'000'000'000).date, PackDate(1970, 1, 1));
  EXPECT_EQ(PackFileTime(125'963'424'000'000'000).date, PackDate(2000, 3, 1));
  EXPECT_EQ(PackFileTime(125'963'424'000'000'000 - kDay).date, PackDate(2000, 2, 29));
  EXPECT_EQ(PackFileTime(0x7FFF'FFFF'FFFF'FFFF).date, PackDate(30828, 9, 14));
}

TEST(OldTime, ATimeThatTheOlderSystemRefusedIsZero) {
  for (const std::uint64_t time : {std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
    EXPECT_EQ(PackFileTime(time).date, 0u);
    EXPECT_EQ(PackFileTime(time).time, 0u);
  }
}

}  // namespace
