// What the ring of an application lost before its file sink, and how that is reported.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "quor/ring/ring_producer.h"
#include "quor/runtime/sink/file_sink.h"
#include "records/record_fields.h"
#include "support/file_traces.h"
#include "support/temp_dir.h"

namespace {

// While it lives no file of this process may grow.
class NoRoomInFiles {
 public:
  NoRoomInFiles() {
    getrlimit(RLIMIT_FSIZE, &m_before);
    rlimit now = m_before;
    now.rlim_cur = 0;
    setrlimit(RLIMIT_FSIZE, &now);
  }
  ~NoRoomInFiles() { setrlimit(RLIMIT_FSIZE, &m_before); }
  NoRoomInFiles(const NoRoomInFiles&) = delete;
  NoRoomInFiles& operator=(const NoRoomInFiles&) = delete;

 private:
  rlimit m_before{};
};

class FileSinkLoss : public testing::Test {
 protected:
  FileSinkLoss() {
    SegmentSizes sizes;
    sizes.points = 16;
    sizes.nameBytes = 4096;
    sizes.ringBytes = 4096;
    EXPECT_TRUE(m_segment.Create(sizes, 1, 7));
    m_names->Begin(m_segment);
    m_producer = RingProducer(m_segment);
    m_sink = std::make_unique<FileSink>(m_segment, *m_names, FileSink::LossNames{},
                                        m_folder.File("a.trc"), SinkOptions());
    m_sink->Begin();
  }
  bool Trace() {
    RingProducer::Slot slot;
    if (!m_producer.Reserve(kTraceFixedBytes, slot)) return false;
    StoreRecord<AppNameId>(slot.record, {});
    m_producer.Commit(slot);
    return true;
  }
  // Until the ring is full, and `drops` more. Gives how many went into it.
  std::uint64_t Fill(std::uint64_t drops) {
    std::uint64_t traces = 0;
    while (Trace()) ++traces;
    while (--drops > 0) EXPECT_FALSE(Trace());
    return traces;
  }
  std::uint64_t Reported() {
    FileSink::Report report;
    return m_sink->TakeReport(&report, true) ? report.lost : 0;
  }
  std::uint64_t Unreported() const { return m_segment.Header()->sinkUnreported; }

  TempDir m_folder;
  SegmentMap m_segment;
  const std::unique_ptr<NameTable> m_names{new NameTable()};
  RingProducer m_producer;
  std::unique_ptr<FileSink> m_sink;
};

TEST_F(FileSinkLoss, WhatTheRingDroppedIsReportedToTheServiceWhenTheFileDoesNotReportIt) {
  constexpr std::uint64_t kDrops = 5;
  const std::uint64_t traces = Fill(kDrops);
  m_sink->Drain(1);  // there is room for the trace that tells the drops
  m_sink->Push();
  ASSERT_TRUE(Trace());
  {
    const NoRoomInFiles full;
    m_sink->DrainReserved();
    m_sink->Push();
    EXPECT_EQ(Unreported(), traces + kDrops);
    EXPECT_EQ(Reported(), traces + kDrops);
    m_sink->Push();
  }
  EXPECT_EQ(Reported(), 0u);
}

// The trace that tells the drops moves to a file that cannot take it either.
TEST_F(FileSinkLoss, WhatTheRingDroppedIsReportedToTheServiceWhenTheNextFileDoesNotReportItEither) {
  constexpr std::uint64_t kDrops = 5;
  const std::uint64_t traces = Fill(kDrops);
  m_sink->Drain(1);
  m_sink->Push();  // the file has the names that the next one needs
  ASSERT_TRUE(Trace());
  m_sink->DrainReserved();
  ASSERT_TRUE(m_sink->HoldsBytes());
  ASSERT_EQ(unlink(m_sink->Path().c_str()), 0);
  const NoRoomInFiles full;
  m_sink->Push();
  EXPECT_EQ(Unreported(), traces + kDrops);
  EXPECT_EQ(Reported(), traces + kDrops);
}

// While nothing but drops comes, no trace pushes the buffer.
TEST_F(FileSinkLoss, ABufferFullOfTracesThatTellDropsIsPushed) {
  constexpr std::uint64_t kDrops = 3000;
  ASSERT_TRUE(Trace());
  m_sink->DrainReserved();
  m_sink->Push();  // the file has the names that the others need
  const auto before = std::filesystem::file_size(m_sink->Path());
  for (std::uint64_t drop = 0; drop < kDrops; ++drop) {
    m_segment.Header()->dropped.fetch_add(1);
    m_segment.Header()->pendingDrops.fetch_add(1);
    ASSERT_EQ(m_sink->Drain(1), 1u);
    if (std::filesystem::file_size(m_sink->Path()) > before) break;
  }
  EXPECT_GE(std::filesystem::file_size(m_sink->Path()), before + (64u << 10));
  m_sink->Push();
  EXPECT_TRUE(ReadTrc(m_sink->Path()).whole);
  EXPECT_EQ(Unreported(), 0u);
}

TEST_F(FileSinkLoss, WhatTheFileReportsIsNotReportedToTheService) {
  Fill(5);
  m_sink->Drain(1);
  m_sink->Push();
  ASSERT_TRUE(Trace());
  m_sink->DrainReserved();
  m_sink->Push();
  EXPECT_EQ(Unreported(), 0u);
  EXPECT_EQ(Reported(), 0u);
}

}  // namespace
