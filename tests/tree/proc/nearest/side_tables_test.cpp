// What the search by number keeps beside the nodes: it follows what goes, and leaves nothing for a
// node that comes to lie where another one lay.
#include <gtest/gtest.h>

#include <optional>

#include "tree/proc/nearest/empty_fronts.h"
#include "tree/proc/nearest/two_runs.h"
#include "tree/proc/nodes/block_store.h"
#include "tree/proc/nodes/word_pool.h"

namespace {

class SideTables : public testing::Test {
 protected:
  // With numbers that rise from 1.
  CExecutionBlock* Block(CExecutionBlock& around) {
    CExecutionBlock* const block = &m_store.Make(nullptr, around);
    block->thread = &m_thread;
    block->sequenceNumber = ++m_number;
    around.children.AppendBlock(m_pool, block);
    return block;
  }
  CExecutionBlock* OpenBlock(CExecutionBlock& around) {
    return static_cast<CExecutionBlock*>(m_thread.currentBlock = Block(around));
  }
  void ClosedBlocks(CExecutionBlock& around, int count) {
    for (int i = 0; i < count; ++i) Block(around)->closed = true;
  }

  CProcessThread m_thread{nullptr, nullptr, 1};
  BlockStore m_store;
  WordPool m_pool;
  std::uint32_t m_number = 0;
};

TEST_F(SideTables, ClosedBlocksWithNothingBelowThemAreCountedUpToTheFirstOther) {
  EmptyFronts empty;
  EXPECT_EQ(empty.Count(m_thread), 0u);
  ClosedBlocks(m_thread, 3);
  CTraceEvent leaf;
  CExecutionBlock* const full = Block(m_thread);
  full->children.AppendLeaf(m_pool, &leaf);
  full->closed = true;
  ClosedBlocks(m_thread, 1);
  EXPECT_EQ(empty.Count(m_thread), 3u);
  full->children.Erase(0);
  EXPECT_EQ(empty.Count(m_thread), 5u);
  Block(m_thread);
  EXPECT_EQ(empty.Count(m_thread), 5u) << "something may still come below an open one";
}

TEST_F(SideTables, ABlockOfEmptyBlocksIsEmptyOnceTheyWereCounted) {
  EmptyFronts empty;
  CExecutionBlock* const outer = Block(m_thread);
  ClosedBlocks(*outer, 2);
  outer->closed = true;
  EXPECT_EQ(empty.Count(m_thread), 0u);
  EXPECT_EQ(empty.Count(*outer), 2u);
  EXPECT_EQ(empty.Count(m_thread), 1u);
}

TEST_F(SideTables, TheCountOfEmptyChildrenShrinksWithThem) {
  EmptyFronts empty;
  ClosedBlocks(m_thread, 4);
  CExecutionBlock* const open = Block(m_thread);
  EXPECT_EQ(empty.Count(m_thread), 4u);
  m_thread.children.Erase(1);
  empty.OnErased(m_thread, 1);
  EXPECT_EQ(empty.Count(m_thread), 3u);
  m_thread.children.Erase(3);
  empty.OnErased(m_thread, 3);
  EXPECT_EQ(empty.Count(m_thread), 3u) << "that one did not count";
  m_thread.children.AppendBlock(m_pool, open);
  for (int left = 3; left > 0; --left) {
    m_thread.children.Erase(0);
    empty.OnErased(m_thread, 0);
  }
  EXPECT_EQ(empty.Count(m_thread), 0u);
}

TEST_F(SideTables, ABlockInTheStorageOfAnEmptyOneHasACountOfItsOwn) {
  EmptyFronts empty;
  CExecutionBlock* const old = Block(m_thread);
  ClosedBlocks(*old, 2);
  ASSERT_EQ(empty.Count(*old), 2u);
  for (int left = 2; left > 0; --left) {
    old->children.Erase(0);
    empty.OnErased(*old, 0);
  }
  m_store.Drop(*old);
  CExecutionBlock* const fresh = Block(m_thread);
  ASSERT_EQ(fresh, old);
  Block(*fresh);
  EXPECT_EQ(empty.Count(*fresh), 0u);
}

// One block open in the other, and children before, between and after.
class TwoRunsTest : public SideTables {
 protected:
  TwoRunsTest() {
    ClosedBlocks(m_thread, 2);
    m_outer = OpenBlock(m_thread);
    ClosedBlocks(*m_outer, 1);
    m_inner = OpenBlock(*m_outer);
    m_runs.emplace(m_thread);
    m_number = 0;
  }

  CExecutionBlock *m_outer, *m_inner;
  std::optional<TwoRuns> m_runs;
};

TEST_F(TwoRunsTest, OpenNodesKnowHowManyChildrenCameBefore) {
  ClosedBlocks(*m_inner, 1);
  ClosedBlocks(*m_outer, 1);
  ClosedBlocks(m_thread, 1);
  EXPECT_EQ(m_runs->FirstRunOf(m_thread), 3u);
  EXPECT_EQ(m_runs->FirstRunOf(*m_outer), 2u);
  EXPECT_EQ(m_runs->FirstRunOf(*m_inner), 0u);
  EXPECT_EQ(m_runs->OpenIn(m_thread), m_outer);
  EXPECT_EQ(m_runs->OpenIn(*m_outer), m_inner);
  EXPECT_EQ(m_runs->OpenIn(*m_inner), nullptr);
}

TEST_F(TwoRunsTest, AllOfABlockThatWasClosedIsOfTheFirstRun) {
  CExecutionBlock& closed = *m_thread.children.BlockAt(0);
  ClosedBlocks(closed, 2);
  EXPECT_EQ(m_runs->FirstRunOf(closed), 2u);
}

TEST_F(TwoRunsTest, ChildrenThatGoCountOnlyBeforeTheSecondRun) {
  ClosedBlocks(m_thread, 2);
  m_thread.children.Erase(4);
  m_runs->OnErased(m_thread, 4);
  EXPECT_EQ(m_runs->FirstRunOf(m_thread), 3u);
  m_thread.children.Erase(0);
  m_runs->OnErased(m_thread, 0);
  EXPECT_EQ(m_runs->FirstRunOf(m_thread), 2u);
  EXPECT_EQ(m_runs->OpenIn(m_thread), m_outer);
  m_thread.children.Erase(1);
  m_runs->OnErased(m_thread, 1);
  EXPECT_EQ(m_runs->OpenIn(m_thread), nullptr) << "the open one has gone, a closed one is the last";
}

TEST_F(TwoRunsTest, EachBlockIsOfOneRun) {
  CExecutionBlock* const closed = m_thread.children.BlockAt(1);
  CExecutionBlock* const below = Block(*closed);
  CExecutionBlock* const inInner = Block(*m_inner);
  CExecutionBlock* const belowInner = Block(*inInner);
  CExecutionBlock* const after = Block(m_thread);
  for (const CExecutionBlock* const first : {closed, below, m_outer, m_inner})
    EXPECT_TRUE(m_runs->IsOfFirstRun(*first)) << first->sequenceNumber;
  for (const CExecutionBlock* const second : {inInner, belowInner, after})
    EXPECT_FALSE(m_runs->IsOfFirstRun(*second)) << second->sequenceNumber;
}

TEST_F(TwoRunsTest, ABlockInTheStorageOfOneThatWasOpenIsOfTheSecondRun) {
  m_outer->children.Erase(1);
  m_runs->OnErased(*m_outer, 1);
  m_runs->OnDropped(*m_inner);
  m_store.Drop(*m_inner);
  CExecutionBlock* const fresh = Block(*m_outer);
  ASSERT_EQ(fresh, m_inner);
  ClosedBlocks(*fresh, 2);
  EXPECT_FALSE(m_runs->IsOfFirstRun(*fresh));
  EXPECT_EQ(m_runs->FirstRunOf(*fresh), 2u) << "no bar in it";
}

}  // namespace
