// A buffer of the file sink that moves to a new file while the disk is full for a moment.
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <memory>

#include "quor/ring/ring_producer.h"
#include "quor/runtime/sink/file_sink.h"
#include "records/record_fields.h"
#include "support/file_traces.h"
#include "support/temp_dir.h"

namespace {

int g_failingWrites = 0;

}  // namespace

// In the place of the C library's.
extern "C" ssize_t write(int file, const void* bytes, size_t size) {
  if (g_failingWrites > 0) {
    --g_failingWrites;
    errno = ENOSPC;
    return -1;
  }
  return syscall(SYS_write, file, bytes, size);
}

namespace {

class NextFile : public testing::Test {
 protected:
  NextFile() {
    SegmentSizes sizes;
    sizes.points = 16;
    sizes.nameBytes = 64 << 10;
    sizes.ringBytes = 256 << 10;
    EXPECT_TRUE(m_segment.Create(sizes, 1, 7));
    m_names->Begin(m_segment);
    m_producer = RingProducer(m_segment);
    m_fields.machine = m_names->Enter(std::string(4000, 'm'));
    m_fields.app = m_names->Enter(std::string(4000, 'a'));
    m_fields.component = m_names->Enter("Work");
    m_fields.category = m_names->Enter(std::string(4000, 'd'));
    m_fields.text = m_text;
    m_sink = std::make_unique<FileSink>(m_segment, *m_names, FileSink::LossNames{},
                                        m_folder.File("a.trc"), SinkOptions());
    m_sink->Begin();
  }
  ~NextFile() override { g_failingWrites = 0; }
  void Trace(int count) {
    for (; count > 0; --count) {
      RingProducer::Slot slot;
      ASSERT_TRUE(m_producer.Reserve(kTraceFixedBytes + m_text.size(), slot));
      StoreRecord(slot.record, m_fields);
      m_producer.Commit(slot);
    }
    m_sink->DrainReserved();
  }

  const TempDir m_folder;
  const std::string m_text = std::string(6000, 't');
  SegmentMap m_segment;
  const std::unique_ptr<NameTable> m_names{new NameTable()};
  RingProducer m_producer;
  RecordFieldsOf<AppNameId> m_fields;
  std::unique_ptr<FileSink> m_sink;
};

// The names, which only the removed file had, make two writes out of one.
TEST_F(NextFile, HasItsHeaderAlsoWhenTheFirstWriteToItFails) {
  Trace(1);
  m_sink->Push();
  Trace(10);
  ASSERT_EQ(unlink(m_sink->Path().c_str()), 0);
  g_failingWrites = 1;
  m_sink->Push();
  EXPECT_EQ(g_failingWrites, 0);
  const FileTraces file = ReadTrc(m_sink->Path());
  EXPECT_TRUE(file.whole);
  ASSERT_EQ(file.texts.size(), 1u);
  EXPECT_EQ(file.texts[0], m_text);
  EXPECT_EQ(file.numbers[0], 11u);
  EXPECT_EQ(m_segment.Header()->sinkLost, 9u);
  EXPECT_EQ(m_segment.Header()->sinkUnreported, 9u);
}

}  // namespace
