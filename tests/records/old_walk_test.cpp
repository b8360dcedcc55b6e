#include "records/old_walk.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "support/old_trc_image.h"

namespace {

// Writes down what the walk meets.
struct OldNotes {
  void OnName(OldName kind, std::uint8_t key, std::string_view text) {
    out << "name " << static_cast<int>(kind) << ' ' << int{key} << ' ' << text << '\n';
  }
  bool OnTrace(const OldTrace& trace, std::string_view text) {
    out << "trace " << trace.SequenceNumber() << ' ' << text << '\n';
    return --tracesLeft > 0;
  }
  void OnUnknownTag(std::uint64_t position) { out << "unknown @" << position << '\n'; }
  bool OnProgress(std::uint64_t position) {
    progress.push_back(position);
    return progress.size() < cancelAt;
  }

  int tracesLeft = std::numeric_limits<int>::max();
  std::size_t cancelAt = std::numeric_limits<std::size_t>::max();
  std::ostringstream out = {};
  std::vector<std::uint64_t> progress = {};
};

std::string Walked(const OldTrcImage& image) {
  const GuardedBytes bytes = image.Guarded();
  OldNotes notes;
  WalkOldTrc(bytes.View(), notes);
  return notes.out.str();
}

TEST(OldWalk, NumbersAreLittleEndianAtTheirPlaces) {
  std::uint8_t body[OldTrace::kFixedBytes];
  for (std::size_t i = 0; i < sizeof body; ++i) body[i] = static_cast<std::uint8_t>(i + 1);
  const OldTrace trace(body);
  EXPECT_EQ(trace.SequenceNumber(), 0x04030201u);
  EXPECT_EQ(trace.FileTime(), 0x0C0B0A0908070605u);
  EXPECT_EQ(trace.Component(), 13);
  EXPECT_EQ(trace.Category(), 15);
  EXPECT_EQ(trace.SourceFile(), 17);
  EXPECT_EQ(trace.Machine(), 19);
  EXPECT_EQ(trace.App(), 20);
  EXPECT_EQ(trace.Severity(), 21);
  EXPECT_EQ(trace.Attribute(), 22);
  EXPECT_EQ(trace.SourceLine(), 0x1A191817u);
  EXPECT_EQ(trace.Pid(), 0x1C1B);
  EXPECT_EQ(trace.Tid(), 0x1E1D);
  EXPECT_EQ(trace.TicCount(), 0x262524232221201Fu);
}

TEST(OldWalk, TheHeaderIs11CharactersAndANul) {
  EXPECT_EQ(kOldTrcHeaderBytes, 12u);
  EXPECT_EQ(VersionOf(OldTrcImage().Guarded().View()), TrcVersion::Old);
  EXPECT_EQ(Walked(OldTrcImage()), "");
}

TEST(OldWalk, AFileThatEndsBeforeTheNulOfItsHeaderIsEmpty) {
  const OldTrcImage image = OldTrcImage().Cut(1);
  EXPECT_EQ(VersionOf(image.Guarded().View()), TrcVersion::Old);
  EXPECT_EQ(Walked(image), "");
}

TEST(OldWalk, OnlyARecordThatBeginsInTheFileIsCut) {
  struct CutNotes {
    void OnName(OldName, std::uint8_t, std::string_view) {}
    bool OnTrace(const OldTrace&, std::string_view) { return true; }
    void OnUnknownTag(std::uint64_t) {}
    void OnCutRecord(std::uint64_t) { ++cuts; }
    bool OnProgress(std::uint64_t) { return true; }
    int cuts = 0;
  };
  const auto cuts = [](const OldTrcImage& image) {
    const GuardedBytes bytes = image.Guarded();
    CutNotes notes;
    WalkOldTrc(bytes.View(), notes);
    return notes.cuts;
  };
  EXPECT_EQ(cuts(OldTrcImage().Cut(1)), 0) << "a header without its NUL";
  EXPECT_EQ(cuts(OldTrcImage().Trace("a").Cut(1)), 1);
}

TEST(OldWalk, Tags0And1HaveKeysOfOneByteAndTags2To4OfTwo) {
  OldTrcImage image;
  image.Machine(1, "web").App(2, "shop").Component(3, "Net").Category(4, "Send");
  image.SourceFile(5, "a.c").Trace("up");
  EXPECT_EQ(Walked(image),
            "name 0 1 web\nname 1 2 shop\nname 2 3 Net\nname 3 4 Send\nname 4 5 a.c\ntrace 1 up\n");
}

TEST(OldWalk, AKeyOfTwoBytesIsReadAsItsLowByte) {
  const auto image = OldTrcImage().Component(0x0101, "Net").Category(0xFF02, "x").SourceFile(3, "");
  EXPECT_EQ(Walked(image), "name 2 1 Net\nname 3 2 x\nname 4 3 \n");
}

TEST(OldWalk, AByteAboveTag5IsSteppedOverAndTheNextRecordStillReads) {
  const auto image = OldTrcImage().Raw(6).Trace("a").Raw(255).Raw(11).Machine(1, "web");
  EXPECT_EQ(Walked(image), "unknown @12\ntrace 1 a\nunknown @62\nunknown @63\nname 0 1 web\n");
}

TEST(OldWalk, ATextWithoutItsNulEndsWithTheFile) {
  EXPECT_EQ(Walked(OldTrcImage().Trace("a").Trace("up").Cut(1)), "trace 1 a\ntrace 1 up\n");
  EXPECT_EQ(Walked(OldTrcImage().Trace("a").Trace("up").Cut(2)), "trace 1 a\ntrace 1 u\n");
  EXPECT_EQ(Walked(OldTrcImage().Machine(1, "web").Cut(2)), "name 0 1 we\n");
}

TEST(OldWalk, ARecordCutAnywhereIsTheLastOneAndNothingAfterTheGuardIsRead) {
  OldTrcImage whole;
  whole.Component(1, "Net").Trace("up");
  for (std::size_t cut = 0; cut < whole.Size() - 12; ++cut) {
    const OldTrcImage image = OldTrcImage(whole).Cut(cut);
    // Just so many bytes beyond the end as the walk asks for, in a block of its own.
    std::vector<std::uint8_t> bytes(image.Bytes().begin(), image.Bytes().end());
    bytes.resize(image.Size() + OldTrace::kFixedBytes);
    bytes.shrink_to_fit();
    OldNotes notes;
    const std::uint64_t end = WalkOldTrc(Bytes(bytes.data(), image.Size()), notes);
    EXPECT_GE(end, image.Size()) << cut;
    EXPECT_LE(end, image.Size() + OldTrace::kFixedBytes + 1) << cut;
    const std::string reported = notes.out.str();
    EXPECT_EQ(reported.substr(0, 8), "name 2 " + std::string(image.Size() > 13 ? "1" : "0")) << cut;
  }
}

TEST(OldWalk, ProgressComesAtMultiplesOf1024RecordsOfAnyTag) {
  OldTrcImage image;
  std::vector<std::uint64_t> expected;
  for (int record = 1; record <= 2500; ++record) {
    if (record % 3 == 0) {
      image.Machine(1, "web");
    } else if (record % 3 == 1) {
      image.Raw(6);
    } else {
      image.Trace("x");
    }
    if (record % 1024 == 0) expected.push_back(image.Size());
  }
  const GuardedBytes bytes = image.Guarded();
  OldNotes notes;
  EXPECT_EQ(WalkOldTrc(bytes.View(), notes), image.Size());
  EXPECT_EQ(notes.progress, expected);
}

TEST(OldWalk, CancelEndsTheWalkAtItsLook) {
  OldTrcImage image;
  for (int i = 0; i < 3000; ++i) image.Trace("x");
  const GuardedBytes bytes = image.Guarded();
  OldNotes notes{.cancelAt = 2};
  EXPECT_EQ(WalkOldTrc(bytes.View(), notes), 12u + 2048u * 49);
  EXPECT_EQ(notes.progress.size(), 2u);
}

TEST(OldWalk, ASinkThatTakesNoMoreTracesEndsTheWalk) {
  const GuardedBytes bytes = OldTrcImage().Trace("a").Trace("b").Trace("c").Guarded();
  OldNotes notes{.tracesLeft = 2};
  WalkOldTrc(bytes.View(), notes);
  EXPECT_EQ(notes.out.str(), "trace 1 a\ntrace 1 b\n");
}

}  // namespace
