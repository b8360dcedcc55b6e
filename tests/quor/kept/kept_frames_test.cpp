// Frames that were sent and not taken: numbers, bounds, what comes again.
#include "quor/kept/kept_frames.h"

#include <gtest/gtest.h>

#include "records/record_fields.h"

namespace {

class Kept : public testing::Test {
 protected:
  // The queue's next frame, of one source with so many traces.
  void KeepOne(std::uint64_t traces = 1, std::size_t bytes = 100) {
    BatchBuilder builder(m_names);
    std::vector<std::uint8_t> record;
    RecordFieldsOf<HubNameId> fields;
    const std::string text(bytes, 'x');
    fields.text = text;
    MakeRecord(fields, record);
    for (std::uint64_t i = 0; i < traces; ++i) builder.Append(m_source, record, TraceIds{}, 1);
    m_queue.Push(builder.Seal());
    Outgoing out;
    ASSERT_TRUE(m_queue.Next(out));
    m_sent.push_back(out.batch);
    EXPECT_EQ(m_kept.Keep(out).batch, out.batch);
  }
  std::vector<SharedBatch> Take(std::uint64_t frames, bool good = true) {
    std::vector<SharedBatch> taken;
    const auto note = [&](const Batch& batch) {
      for (const SharedBatch& sent : m_sent)
        if (sent.get() == &batch) taken.push_back(sent);
    };
    EXPECT_EQ(m_kept.Take(frames, note), good) << frames;
    return taken;
  }

  HubNames m_names;
  StreamQueue m_queue{m_names, {}};
  std::shared_ptr<Source> m_source = std::make_shared<Source>();
  std::vector<SharedBatch> m_sent;
  KeptFrames m_kept;
};

TEST_F(Kept, AreTakenFromTheFrontEachOnce) {
  for (int i = 0; i < 3; ++i) KeepOne();
  EXPECT_EQ(Take(2), (std::vector<SharedBatch>{m_sent[0], m_sent[1]}));
  EXPECT_TRUE(Take(2).empty()) << "the same again";
  EXPECT_EQ(m_kept.Taken(), 2u);
  EXPECT_EQ(m_kept.Sent(), 3u);
  KeepOne();
  EXPECT_EQ(Take(4), (std::vector<SharedBatch>{m_sent[2], m_sent[3]}));
  EXPECT_TRUE(m_kept.IsEmpty());
  EXPECT_EQ(m_kept.Bytes(), 0u);
}

TEST_F(Kept, ANumberThatCannotBeChangesNothing) {
  for (int i = 0; i < 3; ++i) KeepOne(5);
  Take(1);
  const std::size_t bytes = m_kept.Bytes();
  for (const std::uint64_t wrong : {std::uint64_t{0}, std::uint64_t{4}, ~std::uint64_t{0}})
    EXPECT_TRUE(Take(wrong, false).empty());
  EXPECT_EQ(m_kept.Taken(), 1u);
  EXPECT_EQ(m_kept.Traces(), 10u);
  EXPECT_EQ(m_kept.Bytes(), bytes);
}

TEST_F(Kept, AFrameCostsSomethingAlsoWithoutRecords) {
  Outgoing out;
  BatchBuilder builder(m_names);
  builder.CountLost(m_source, 1);
  m_queue.Push(builder.Seal());
  ASSERT_TRUE(m_queue.Next(out));
  ASSERT_TRUE(out.records->empty());
  m_kept.Keep(out);
  EXPECT_GT(m_kept.Bytes(), 0u);
}

TEST_F(Kept, WhatIsWithdrawnComesAgainInOrderWithTheSameNumbers) {
  for (int i = 0; i < 4; ++i) KeepOne();
  Take(1);
  EXPECT_EQ(m_kept.Withdraw(), (std::vector<SharedBatch>{m_sent[1], m_sent[2], m_sent[3]}));
  EXPECT_EQ(m_kept.Bytes(), 0u);
  EXPECT_EQ(m_kept.Sent(), 1u);
  Take(2, false);
  m_queue.Restart({m_sent.begin() + 1, m_sent.end()});
  Outgoing out;
  for (std::size_t i = 1; i < 4; ++i) {
    ASSERT_TRUE(m_queue.Next(out));
    m_kept.Keep(out);
    EXPECT_EQ(Take(i + 1), std::vector<SharedBatch>{m_sent[i]});
  }
}

TEST_F(Kept, KeepTheirSourceUnderWayUntilTheyAreTaken) {
  KeepOne();
  m_sent.clear();
  EXPECT_TRUE(m_source->IsUnderWay());
  Take(1);
  EXPECT_FALSE(m_source->IsUnderWay());
}

}  // namespace
