#include "records/trc_walk.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <limits>
#include <optional>
#include <sstream>

#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

// Writes down what the walk meets.
struct Notes {
  void OnName(NameId id, std::string_view utf8) { out << "name " << id << ' ' << utf8 << '\n'; }
  void OnTrace(const std::uint8_t* record) {
    out << "trace @" << record - begin << ' ' << RawTrace(record).Text() << '\n';
  }
  void OnUnknownTag(std::uint64_t position) { out << "unknown @" << position << '\n'; }
  bool OnProgress(std::uint64_t position) {
    progress.push_back(position);
    return progress.size() < cancelAt;
  }

  const std::uint8_t* begin;
  std::size_t cancelAt = std::numeric_limits<std::size_t>::max();
  std::ostringstream out = {};
  std::vector<std::uint64_t> progress = {};
};

std::string Walked(const TrcImage& image) {
  const GuardedBytes bytes = image.Guarded();
  Notes notes{.begin = bytes.At(0)};
  WalkTrc(bytes.View(), notes);
  return notes.out.str();
}

std::uint64_t EndOfWalk(const TrcImage& image) {
  const GuardedBytes bytes = image.Guarded();
  Notes notes{.begin = bytes.At(0)};
  return WalkTrc(bytes.View(), notes);
}

TrcVersion VersionOfText(std::string_view text) {
  const GuardedBytes bytes(text);
  return VersionOf(bytes.View());
}

TEST(TrcVersion, TheHeaderIsATextOf15CharactersAndANul) {
  EXPECT_EQ(kTrcHeaderBytes, 16u);
  EXPECT_EQ(VersionOfText(TrcImage().Bytes()), TrcVersion::Current);
  EXPECT_EQ(VersionOfText({"Version 2.2\0rest", 16}), TrcVersion::Old);
}

TEST(TrcVersion, AHeaderThatNamesAnyOtherVersionIsUnknown) {
  EXPECT_EQ(VersionOfText({"TRC Version 3.2\0", 16}), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText({"trc Version 3.1\0", 16}), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText("TRC Version 3.1 "), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText("TRC Version 3.10"), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText("TRC Version 3."), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText({"Version 2.1\0", 12}), TrcVersion::Unknown);
  EXPECT_EQ(VersionOfText("x"), TrcVersion::Unknown);
  EXPECT_EQ(VersionOf({}), TrcVersion::Unknown);
}

TEST(TrcVersion, OnlyTheBytesUpToTheFirstNulCountAndTheEndOfTheFileIsOne) {
  EXPECT_EQ(VersionOfText("TRC Version 3.1"), TrcVersion::Current);
  EXPECT_EQ(VersionOfText("Version 2.2"), TrcVersion::Old);
  EXPECT_EQ(VersionOfText({"Version 2.2\0\x0A\x0B", 14}), TrcVersion::Old);
}

TEST(TrcWalk, AFileOfExactly16BytesHasNoRecords) {
  EXPECT_EQ(Walked(TrcImage()), "");
  EXPECT_EQ(EndOfWalk(TrcImage()), 16u);
  EXPECT_EQ(Walked(TrcImage("TRC Version 3.1")), "");
}

TEST(TrcWalk, NamesAndTracesComeInTheOrderOfTheFile) {
  TrcImage image;
  image.Name(7, "web").Trace("up").Trace({.text = "down", .stack = "main"}).Name(8, "db");
  EXPECT_EQ(Walked(image),
            "name 7 web\n"
            "trace @25 up\n"
            "trace @72 down\n"
            "name 8 db\n");
  EXPECT_EQ(EndOfWalk(image), image.Size());
}

TEST(TrcWalk, AByteOfValue12BetweenRecordsIsSkippedAndTheNextRecordStillReads) {
  EXPECT_EQ(Walked(TrcImage().Name(7, "web").Raw(12).Trace("up").Raw(0).Raw(255).Trace("down")),
            "name 7 web\n"
            "unknown @24\n"
            "trace @26 up\n"
            "unknown @72\n"
            "unknown @73\n"
            "trace @75 down\n");
}

TEST(TrcWalk, ANameOfNoBytesIsEmpty) {
  EXPECT_EQ(Walked(TrcImage().Name(7, "")), "name 7 \n");
}

TEST(TrcWalk, ANameIsCutAtItsFirstNulButTheWholeFieldIsSteppedOver) {
  EXPECT_EQ(Walked(TrcImage().Name(7, {"we\0b", 4}).Trace("up")), "name 7 we\ntrace @26 up\n");
}

TEST(TrcWalk, ATextWithANulInsideIsCutButTheWholeFieldIsSteppedOver) {
  EXPECT_EQ(Walked(TrcImage().Trace({.text = {"up\0xx", 5}, .stack = {"\0y", 2}}).Name(1, "a")),
            "trace @17 up\nname 1 a\n");
}

TEST(TrcWalk, ARecordMayBeginAtAnyByte) {
  for (int shift = 0; shift < 8; ++shift) {
    TrcImage image;
    image.Name(1, std::string(static_cast<std::size_t>(shift), 'n')).Trace("up").Trace("down");
    const std::string walked = Walked(image);
    EXPECT_NE(walked.find(" up\n"), walked.npos) << shift;
    EXPECT_NE(walked.find(" down\n"), walked.npos) << shift;
  }
}

struct CutNotes {
  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t*) {}
  void OnUnknownTag(std::uint64_t) {}
  void OnCutRecord(std::uint64_t position) { cutAt = position; }
  bool OnProgress(std::uint64_t) { return true; }
  std::optional<std::uint64_t> cutAt = {};
};

TEST(TrcWalk, OnlyARecordThatBeginsInTheFileIsCut) {
  const auto cutAt = [](const TrcImage& image) {
    const GuardedBytes bytes = image.Guarded();
    CutNotes notes;
    WalkTrc(bytes.View(), notes);
    return notes.cutAt;
  };
  EXPECT_EQ(cutAt(TrcImage()), std::nullopt);
  EXPECT_EQ(cutAt(TrcImage().Cut(1)), std::nullopt) << "a header without its NUL";
  EXPECT_EQ(cutAt(TrcImage().Trace("a").Cut(1)), 16u);
}

TEST(TrcWalk, ARecordCutAtAnyOfItsBytesIsTheLastOneAndReadsAsZerosAfterTheCut) {
  TrcImage whole;
  whole.Trace("first").Trace({.text = "text", .stack = "stack", .machine = 0x0102, .line = 77});
  const std::size_t lastBytes = 1 + 44 + 4 + 5;
  for (std::size_t cut = 1; cut < lastBytes; ++cut) {
    const GuardedBytes bytes = TrcImage(whole).Cut(cut).Guarded();
    std::vector<const std::uint8_t*> records;
    struct Sink {
      std::vector<const std::uint8_t*>& to;
      void OnName(NameId, std::string_view) { ADD_FAILURE(); }
      void OnTrace(const std::uint8_t* record) { to.push_back(record); }
      void OnUnknownTag(std::uint64_t) { ADD_FAILURE(); }
      bool OnProgress(std::uint64_t) { return true; }
    };
    EXPECT_GE(WalkTrc(bytes.View(), Sink{records}), bytes.View().size());
    ASSERT_EQ(records.size(), 2u) << cut;
    const RawTrace last(records[1]);
    const std::size_t left = lastBytes - cut - 1;  // of the record after its tag
    EXPECT_EQ(last.SequenceNumber(), left >= 4 ? 2u : 0u) << cut;
    EXPECT_EQ(last.MachineId(), left >= 6 ? 0x0102 : left == 5 ? 0x0100 : 0) << cut;
    EXPECT_EQ(last.SourceLine(), left >= 40 ? 77u : 0u) << cut;
    EXPECT_EQ(
        last.Text(),
        std::string("text").substr(0, left > 42 ? left - 42 : 0).substr(0, left >= 42 ? 4 : 0))
        << cut;
    EXPECT_EQ(last.Stack(), std::string("stack").substr(0, left > 48 ? left - 48 : 0)) << cut;
  }
}

TEST(TrcWalk, ANameCutByTheEndOfTheFileHasOnlyTheBytesThatAreThere) {
  EXPECT_EQ(Walked(TrcImage().Name(7, "network").Cut(4)), "name 7 net\n");
  EXPECT_EQ(Walked(TrcImage().Name(7, "network").Cut(7)), "name 7 \n");
  EXPECT_EQ(Walked(TrcImage().Name(7, "network").Cut(10)), "name 0 \n");
  EXPECT_EQ(Walked(TrcImage().Name(7, std::string(65535, 'n')).Cut(65534)), "name 7 n\n");
}

TEST(TrcWalk, TheLongestRecordCutAfterItsLengthStaysWithinTheGuard) {
  TrcImage image;
  image.Trace({.text = std::string(65535, 'x'), .stack = std::string(65535, 'y')});
  EXPECT_EQ(EndOfWalk(image), 16u + MappedFile::kGuardBytes);
  // Cut after the text's length, the stack's length is read from the guard.
  EXPECT_EQ(EndOfWalk(image.Cut(65535 + 2 + 65535)), 16u + 45 + 65535);
}

TEST(TrcWalk, ProgressIsReportedAtEvery1024thRecordOfAnyKind) {
  TrcImage image;
  for (int record = 0; record < 1000; ++record) image.Raw(12);
  for (int record = 0; record < 500; ++record) image.Name(1, "");
  for (int record = 0; record < 548; ++record) image.Trace("");
  const GuardedBytes bytes = image.Guarded();
  Notes notes{.begin = bytes.At(0)};
  EXPECT_EQ(WalkTrc(bytes.View(), notes), image.Size());
  EXPECT_EQ(notes.progress,
            (std::vector<std::uint64_t>{16 + 1000 + 24 * 5, 16 + 1000 + 500 * 5 + 548 * 45}));
}

TEST(TrcWalk, FewerThan1024RecordsTellNoProgress) {
  TrcImage image;
  for (int record = 0; record < 1023; ++record) image.Raw(12);
  const GuardedBytes bytes = image.Guarded();
  Notes notes{.begin = bytes.At(0)};
  WalkTrc(bytes.View(), notes);
  EXPECT_TRUE(notes.progress.empty());
}

TEST(TrcWalk, ACancelEndsTheWalkAtTheCheckAndKeepsWhatWasRead) {
  TrcImage image;
  for (int record = 0; record < 5000; ++record) image.Trace("");
  const GuardedBytes bytes = image.Guarded();
  Notes notes{.begin = bytes.At(0), .cancelAt = 2};
  EXPECT_EQ(WalkTrc(bytes.View(), notes), 16u + 2048 * 45);
  const std::string walked = notes.out.str();
  EXPECT_EQ(std::count(walked.begin(), walked.end(), '\n'), 2048);
}

// An address space of 32 bits has no room for such a file.
#if SIZE_MAX > UINT32_MAX
// 4 GiB that cost one MiB: a block of name records of 64 KiB each, mapped again and again. The last
// record ends beyond 4 GiB, where a position of 32 bits would wrap and the walk begin again.
TEST(TrcWalk, ARecordThatCrossesTheEndNear4GiBEndsTheWalk) {
  constexpr std::uint64_t k4GiB = std::uint64_t{1} << 32;
  constexpr std::size_t kBlock = 1 << 20, kRecord = 1 << 16;
  const int block = memfd_create("block", MFD_CLOEXEC);
  std::string content(kBlock, '\0');
  for (std::size_t at = kTrcHeaderBytes; at < kBlock; at += kRecord) {
    content[at] = kTagName;
    StoreBe16(&content[at + 3], kRecord - 5);
  }
  ASSERT_EQ(write(block, content.data(), kBlock), static_cast<ssize_t>(kBlock));
  const std::size_t reserved = k4GiB + 2 * kBlock;
  void* const memory = mmap(nullptr, reserved, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  auto* const bytes = static_cast<std::uint8_t*>(memory);
  for (std::size_t at = 0; at < reserved; at += kBlock) {
    ASSERT_NE(mmap(bytes + at, kBlock, PROT_READ, MAP_SHARED | MAP_FIXED, block, 0), MAP_FAILED);
  }
  close(block);
  struct Counter {
    std::uint64_t names = 0;
    void OnName(NameId, std::string_view) { ++names; }
    void OnTrace(const std::uint8_t*) { ADD_FAILURE(); }
    void OnUnknownTag(std::uint64_t) { ADD_FAILURE(); }
    bool OnProgress(std::uint64_t) { return names <= 2 * kRecord; }
  } counter;
  EXPECT_EQ(WalkTrc({bytes, k4GiB - 1}, counter), k4GiB + kTrcHeaderBytes);
  EXPECT_EQ(counter.names, k4GiB / kRecord);
  munmap(memory, reserved);
}
#endif

TEST(TrcWalk, AFileCutWhileItIsMappedReadsAsUnknownBytesFromThere) {
  TempDir dir;
  TrcImage image;
  for (int record = 0; record < 4000; ++record) image.Trace("text");
  const std::string path = image.WriteTo(dir.File("a.trc"));
  const auto file = MappedFile::Open(path);
  ASSERT_TRUE(file);
  ASSERT_EQ(truncate(path.c_str(), 8192), 0);
  struct Counter {
    std::uint64_t traces = 0, unknown = 0;
    void OnName(NameId, std::string_view) { ADD_FAILURE(); }
    void OnTrace(const std::uint8_t*) { ++traces; }
    void OnUnknownTag(std::uint64_t) { ++unknown; }
    bool OnProgress(std::uint64_t) { return true; }
  } counter;
  WalkTrc(file->View(), counter);
  EXPECT_GE(counter.traces, (8192u - 16) / 49);
  EXPECT_GT(counter.unknown, 10000u);
}

}  // namespace
