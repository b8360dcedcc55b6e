// The blocks of a tree: they never move, and what is dropped is used again.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "tree/proc/nodes/block_store.h"

namespace {

class BlockStoreTest : public testing::Test {
 protected:
  CExecutionBlock& Make(NameId id) {
    CExecutionBlock& block = m_store.Make(nullptr, m_thread);
    block.id = id;
    return block;
  }
  std::multiset<NameId> Visited() {
    std::multiset<NameId> ids;
    m_store.ForEach([&ids](CExecutionBlock& block) { ids.insert(block.id); });
    return ids;
  }

  CProcessThread m_thread{nullptr, nullptr, 1};
  BlockStore m_store;
};

TEST_F(BlockStoreTest, ANewBlockLiesBelowTheGivenNodeAndIsOpen) {
  const CExecutionBlock& block = m_store.Make(nullptr, m_thread);
  EXPECT_EQ(block.parent, &m_thread);
  EXPECT_EQ(block.Kind(), NodeKind::Block);
  EXPECT_FALSE(block.closed);
  EXPECT_TRUE(block.children.empty());
}

TEST_F(BlockStoreTest, AVisitSeesEachLivingBlockOnce) {
  Make(1);
  CExecutionBlock& gone = Make(2);
  Make(3);
  m_store.Drop(gone);
  EXPECT_EQ(Visited(), (std::multiset<NameId>{1, 3}));
}

TEST_F(BlockStoreTest, TheSlotOfADroppedBlockIsUsedAgainWithNothingLeftInIt) {
  CExecutionBlock& gone = Make(2);
  gone.closed = gone.takenOut = true;
  gone.duration = 17;
  m_store.Drop(gone);
  const CExecutionBlock& next = Make(4);
  EXPECT_EQ(&next, &gone);
  EXPECT_FALSE(next.closed || next.takenOut);
  EXPECT_EQ(next.duration, 0);
  EXPECT_EQ(Visited(), (std::multiset<NameId>{4}));
}

TEST_F(BlockStoreTest, BlocksOfSeveralPiecesStayWhereTheyAre) {
  constexpr int kBlocks = 50000;
  std::vector<CExecutionBlock*> blocks;
  blocks.reserve(kBlocks);
  for (int i = 0; i < kBlocks; ++i) blocks.push_back(&Make(static_cast<NameId>(i % 1000)));
  for (int i = 0; i < kBlocks; ++i) ASSERT_EQ(blocks[static_cast<std::size_t>(i)]->id, i % 1000);
  EXPECT_EQ(Visited().size(), blocks.size());
}

TEST_F(BlockStoreTest, AClearDestroysEveryBlockOnce) {
  const int before = CExecutionBlock::s_live;
  CExecutionBlock& gone = Make(1);
  for (int i = 0; i < 30000; ++i) Make(2);
  m_store.Drop(gone);
  m_store.Clear();
  EXPECT_EQ(CExecutionBlock::s_live, before);
  EXPECT_TRUE(Visited().empty());
  Make(3);
  EXPECT_EQ(Visited(), (std::multiset<NameId>{3}));
}

}  // namespace
