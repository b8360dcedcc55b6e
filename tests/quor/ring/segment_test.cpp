// What the service accepts as a segment, and how it reads names and points.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>

#include "quor/ring/segment_map.h"
#include "quor/ring/segment_names.h"
#include "records/name_record.h"

namespace {

SegmentSizes Small() {
  SegmentSizes sizes;
  sizes.points = 8;
  sizes.nameBytes = 1024;
  sizes.ringBytes = 4096;
  return sizes;
}

// Why a segment that was changed by `harm` is refused; "" when it is accepted.
std::string WhyRefused(const std::function<void(SegmentHeader&)>& harm) {
  SegmentMap made;
  EXPECT_TRUE(made.Create(Small(), 1, 2));
  harm(*made.Header());
  SegmentMap opened;
  const char* why = "";
  return opened.Open(dup(made.Descriptor()), &why) ? "" : why;
}

TEST(SegmentMap, TheServiceSeesWhatTheApplicationMade) {
  SegmentMap made, opened;
  ASSERT_TRUE(made.Create(Small(), 77, 5));
  const char* why = "";
  ASSERT_TRUE(opened.Open(dup(made.Descriptor()), &why)) << why;
  EXPECT_EQ(opened.Layout().pid, static_cast<std::uint32_t>(getpid()));
  EXPECT_EQ(opened.Layout().startedNs, 77u);
  EXPECT_EQ(opened.Layout().ringBytes, 4096u);
  made.Ring()[5] = 42;
  EXPECT_EQ(opened.Ring()[5], 42);
}

TEST(SegmentMap, AFileOnADiskIsRefusedBecauseReadingItMightWait) {
  // Beside the build: the folder of temporary files may lie in memory.
  char name[] = "segment-XXXXXX";
  const int descriptor = mkstemp(name);
  ASSERT_GE(descriptor, 0);
  unlink(name);
  ASSERT_EQ(ftruncate(descriptor, 1 << 20), 0);
  struct statfs system {};
  ASSERT_EQ(fstatfs(descriptor, &system), 0);
  ASSERT_NE(system.f_type, TMPFS_MAGIC) << "build on a disk, or nothing is tested here";
  SegmentMap opened;
  const char* why = "";
  EXPECT_FALSE(opened.Open(descriptor, &why));
  EXPECT_STREQ(why, "the segment does not lie in memory");
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);  // taken, also when refused
}

TEST(SegmentMap, TheOwnerHasGoneWithItsLastMappingAndNotWithItsDescriptor) {
  auto made = std::make_unique<SegmentMap>();
  SegmentMap opened;
  ASSERT_TRUE(made->Create(Small(), 1, 2));
  const int passed = dup(made->Descriptor());
  ASSERT_TRUE(opened.Open(passed, nullptr));
  EXPECT_FALSE(opened.OwnerIsGone());
  close(made->Descriptor());
  EXPECT_EQ(made->Descriptor(), -1);
  EXPECT_FALSE(opened.OwnerIsGone());
  made.reset();
  EXPECT_TRUE(opened.OwnerIsGone());
}

TEST(SegmentMap, AForkedChildThatDetachesKeepsNamesAndIsNotTheOwner) {
  auto made = std::make_unique<SegmentMap>();
  SegmentMap opened;
  ASSERT_TRUE(made->Create(Small(), 1, 2));
  ASSERT_TRUE(opened.Open(dup(made->Descriptor()), nullptr));
  made->Names()[3] = 7;
  made->Ring()[0] = 9;
  int done[2], go[2];
  ASSERT_EQ(pipe(done), 0);
  ASSERT_EQ(pipe(go), 0);
  const pid_t child = fork();
  if (child == 0) {
    made->Detach(0, 8);
    const char good = made->Names()[3] == 7 && made->Ring()[0] == 0 ? 'y' : 'n';
    made->Ring()[0] = 1;  // private memory
    char byte = 0;
    _exit(write(done[1], &good, 1) == 1 && read(go[0], &byte, 1) == 1 ? 0 : 1);
  }
  char good = 0;
  ASSERT_EQ(read(done[0], &good, 1), 1);
  EXPECT_EQ(good, 'y');
  EXPECT_EQ(opened.Ring()[0], 9);
  made.reset();
  EXPECT_TRUE(opened.OwnerIsGone());  // while the child lives
  ASSERT_EQ(write(go[1], "g", 1), 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  for (const int end : {done[0], done[1], go[0], go[1]}) close(end);
}

TEST(SegmentMap, MemoryThatIsTooShortIsRefused) {
  const int descriptor = memfd_create("x", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  ASSERT_EQ(ftruncate(descriptor, 100), 0);
  SegmentMap opened;
  const char* why = "";
  EXPECT_FALSE(opened.Open(descriptor, &why));
  EXPECT_STREQ(why, "the segment has a wrong size");
}

TEST(SegmentMap, NoDescriptorIsRefused) {
  SegmentMap opened;
  const char* why = "";
  EXPECT_FALSE(opened.Open(-1, &why));
  EXPECT_STREQ(why, "the segment has no descriptor");
}

TEST(SegmentMap, NumbersThatContradictEachOtherAreRefused) {
  EXPECT_EQ(WhyRefused([](SegmentHeader&) {}), "");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.magic[0] = 'x'; }), "the segment has a wrong mark");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.version = 99; }),
            "the segment has an unknown version");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.ringBytes = 4097; }),
            "a size in the segment is out of range");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.ringBytes = 0; }),
            "a size in the segment is out of range");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.ringBytes = 1u << 30; }),
            "a size in the segment is out of range");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.ringBytes = 1u << 29; }),
            "the segment is shorter than its header says");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.pointCapacity = 0xFFFFFFFF; }),
            "a size in the segment is out of range");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.ringOffset = 0xFFFFF000; }),
            "an offset in the segment is wrong");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.namesOffset += 4096; }),
            "an offset in the segment is wrong");
  EXPECT_EQ(WhyRefused([](SegmentHeader& h) { h.salt = 1; }), "the segment's salt is wrong");
}

TEST(SegmentMap, WhatTheHeaderSaysLaterChangesNothing) {
  SegmentMap made, opened;
  ASSERT_TRUE(made.Create(Small(), 1, 2));
  ASSERT_TRUE(opened.Open(dup(made.Descriptor()), nullptr));
  made.Header()->ringOffset = 0xFFFFFFF0;
  made.Header()->ringBytes = 1u << 30;
  EXPECT_EQ(opened.Layout().ringBytes, 4096u);
  EXPECT_EQ(opened.Ring() - reinterpret_cast<std::uint8_t*>(opened.Header()),
            made.Layout().ringOffset);
}

class NamesTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(m_segment.Create(Small(), 1, 2)); }
  void Add(std::uint16_t id, const std::string& text) {
    m_used += StoreNameBody(m_segment.Names() + m_used, AppNameId{id}, text);
    m_segment.Header()->nameBytesUsed.store(static_cast<std::uint32_t>(m_used));
  }
  std::string Read(SegmentNames& names) {
    std::vector<SegmentName> fresh;
    const bool good = names.ReadNew(fresh);
    std::string all;
    for (const SegmentName& name : fresh)
      all += std::to_string(IdNumber(name.id)) + "=" + name.text + " ";
    return all + (good ? "." : "broken");
  }
  SegmentMap m_segment;
  std::size_t m_used = 0;
};

TEST_F(NamesTest, EachCallReadsWhatIsNewSinceTheLast) {
  SegmentNames names(m_segment);
  EXPECT_EQ(Read(names), ".");
  Add(0, "");
  Add(7, "web");
  EXPECT_EQ(Read(names), "0= 7=web .");
  EXPECT_EQ(Read(names), ".");
  Add(65535, "x");
  EXPECT_EQ(Read(names), "65535=x .");
}

TEST_F(NamesTest, AnIdThatIsEnteredTwiceBreaksTheArea) {
  SegmentNames names(m_segment);
  Add(7, "web");
  Add(7, "mail");
  EXPECT_EQ(Read(names), "7=web broken");
  EXPECT_EQ(Read(names), "broken");
}

TEST_F(NamesTest, ANameThatReachesBeyondTheUsedBytesBreaksTheArea) {
  SegmentNames names(m_segment);
  Add(7, "web");
  StoreBe16(m_segment.Names() + 2, 4);
  EXPECT_EQ(Read(names), "broken");
}

TEST_F(NamesTest, MoreUsedBytesThanThereAreOrFewerThanBeforeBreakTheArea) {
  SegmentNames more(m_segment), fewer(m_segment);
  Add(7, "web");
  EXPECT_EQ(Read(fewer), "7=web .");
  m_segment.Header()->nameBytesUsed.store(1);
  EXPECT_EQ(Read(fewer), "broken");
  m_segment.Header()->nameBytesUsed.store(1025);
  EXPECT_EQ(Read(more), "broken");
}

TEST_F(NamesTest, RandomBytesInTheAreaAreSurvived) {
  std::mt19937 random(3);
  for (int round = 0; round < 500; ++round) {
    for (int i = 0; i < 1024; ++i)
      m_segment.Names()[i] = static_cast<std::uint8_t>(random() % (round % 2 ? 256 : 3));
    m_segment.Header()->nameBytesUsed.store(random() % 1100);
    SegmentNames names(m_segment);
    std::vector<SegmentName> fresh;
    names.ReadNew(fresh);
    ASSERT_LE(fresh.size(), 256u);
  }
}

TEST(SegmentPoints, AreReadOnceAndTakeSettings) {
  SegmentMap segment;
  ASSERT_TRUE(segment.Create(Small(), 1, 2));
  SegmentPointsReader reader(segment);
  std::vector<SegmentPointNames> points;
  segment.Points()[0].component = AppNameId{3};
  segment.Points()[0].category = AppNameId{4};
  segment.Header()->pointCount.store(1);
  ASSERT_TRUE(reader.ReadNew(points));
  ASSERT_TRUE(reader.ReadNew(points));
  ASSERT_EQ(points.size(), 1u);
  EXPECT_EQ(points[0].component, AppNameId{3});
  EXPECT_EQ(points[0].category, AppNameId{4});
  reader.SetSettings(0, 0x31F);
  EXPECT_EQ(segment.Points()[0].settings.load(), 0x31Fu);
  EXPECT_EQ(reader.Settings(0), 0x31Fu);
}

// An application and a service of different builds share a segment of one version.
TEST(SegmentPoints, TheWordsThatTheServiceWritesStayWhereThisVersionHasThem) {
  const std::size_t at = offsetof(SegmentHeader, pointCount);
  EXPECT_EQ(kSegmentVersion, 3u);
  EXPECT_EQ(offsetof(SegmentHeader, nameBytesUsed), at + 4);
  EXPECT_EQ(offsetof(SegmentHeader, defaultSettings), at + 12);
  EXPECT_EQ(offsetof(SegmentHeader, reserved), at + 64);
}

TEST(SegmentPoints, MoreThanTheSegmentHoldsOrFewerThanBeforeAreRefused) {
  SegmentMap segment;
  ASSERT_TRUE(segment.Create(Small(), 1, 2));
  SegmentPointsReader reader(segment);
  std::vector<SegmentPointNames> points;
  segment.Header()->pointCount.store(9);
  EXPECT_FALSE(reader.ReadNew(points));
  segment.Header()->pointCount.store(8);
  EXPECT_TRUE(reader.ReadNew(points));
  segment.Header()->pointCount.store(7);
  EXPECT_FALSE(reader.ReadNew(points));
  EXPECT_EQ(points.size(), 8u);
}

}  // namespace
