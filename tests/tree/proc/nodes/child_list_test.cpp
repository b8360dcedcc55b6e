// The children of a node, beside a plain vector.
#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <vector>

#include "tree/proc/nodes/block_store.h"
#include "tree/proc/nodes/word_pool.h"

namespace {

class ChildListTest : public testing::Test {
 protected:
  CTraceEvent* Leaf() {
    CTraceEvent* const leaf = &m_leaves.emplace_back();
    m_list.AppendLeaf(m_pool, leaf);
    return leaf;
  }
  CExecutionBlock* Block() {
    CExecutionBlock* const block = &m_store.Make(nullptr, m_thread);
    m_list.AppendBlock(m_pool, block);
    return block;
  }
  std::vector<CTraceEvent*> Entries() const {
    std::vector<CTraceEvent*> entries;
    for (std::size_t i = 0; i < m_list.size(); ++i) entries.push_back(m_list[i]);
    return entries;
  }

  CProcessThread m_thread{nullptr, nullptr, 1};
  std::deque<CTraceEvent> m_leaves;
  BlockStore m_store;
  WordPool m_pool;
  ChildList m_list;
};

TEST_F(ChildListTest, TellsLeavesFromNodesWithChildren) {
  CTraceEvent* const leaf = Leaf();
  CExecutionBlock* const block = Block();
  EXPECT_TRUE(m_list.IsLeaf(0));
  EXPECT_EQ(m_list.BlockAt(0), nullptr);
  EXPECT_EQ(m_list[0], leaf);
  EXPECT_FALSE(m_list.IsLeaf(1));
  EXPECT_EQ(m_list.BlockAt(1), block);
  EXPECT_EQ(m_list.back(), block);
}

TEST_F(ChildListTest, PositionsShiftWhenAnEntryBeforeThemGoes) {
  CTraceEvent* const a = Leaf();
  CTraceEvent* const b = Leaf();
  CTraceEvent* const c = Leaf();
  EXPECT_EQ(m_list.PositionOf(c), 2u);
  m_list.Erase(1);
  EXPECT_EQ(Entries(), (std::vector<CTraceEvent*>{a, c}));
  EXPECT_EQ(m_list.PositionOf(c), 1u);
  EXPECT_EQ(m_list.PositionOf(b), m_list.size());
}

TEST_F(ChildListTest, TheFirstLeafIsFoundFromAnyPlace) {
  EXPECT_EQ(m_list.FirstLeaf(0), 0u) << "of none";
  Block();
  Block();
  EXPECT_EQ(m_list.FirstLeaf(0), 2u);
  Leaf();
  Block();
  Leaf();
  EXPECT_EQ(m_list.FirstLeaf(0), 2u);
  EXPECT_EQ(m_list.FirstLeaf(3), 4u);
  EXPECT_EQ(m_list.FirstLeaf(5), 5u);
  m_list.Erase(2);
  EXPECT_EQ(m_list.FirstLeaf(0), 3u);
  m_list.Erase(0);
  EXPECT_EQ(m_list.FirstLeaf(0), 2u);
}

TEST_F(ChildListTest, AListThatLosesItsFrontAsFastAsItGrowsStaysAmongTheShortOnes) {
  for (int i = 0; i < 5; ++i) Leaf();
  for (int i = 0; i < 10000; ++i) {
    m_list.Erase(0);
    Leaf();
  }
  EXPECT_EQ(Entries().front(), &m_leaves[m_leaves.size() - 5]);
  m_list.Clear(m_pool);
  // Only runs of 4 and 8 words have ever been taken: a longer one is new, after all of them.
  std::uintptr_t* const eight = m_pool.Take(3);
  EXPECT_EQ(m_pool.Take(4), eight + 8);
}

TEST_F(ChildListTest, AClearGivesTheStorageBack) {
  std::uintptr_t* const words = m_pool.Take(2);
  m_pool.GiveBack(words, 2);
  for (int i = 0; i < 4; ++i) Leaf();
  EXPECT_NE(m_pool.Take(2), words) << "the list has it";
  m_list.Clear(m_pool);
  EXPECT_TRUE(m_list.empty());
  EXPECT_EQ(m_pool.Take(2), words);
}

TEST_F(ChildListTest, IsAPlainVectorInAnyOrderOfCalls) {
  std::mt19937 random(7);
  std::vector<CTraceEvent*> plain;
  for (int i = 0; i < 20000; ++i) {
    if (random() % 100 < 52) {
      plain.push_back(random() % 2 ? Leaf() : Block());
    } else if (!plain.empty()) {
      // A trim takes the front, a hidden trace what is near it, a search any.
      const std::size_t position = random() % 2 ? 0 : random() % plain.size();
      m_list.Erase(position);
      plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(position));
    }
    ASSERT_EQ(m_list.size(), plain.size());
    const std::size_t from = random() % (plain.size() + 1);
    std::size_t leaf = from;
    while (leaf < plain.size() && plain[leaf]->Kind() != NodeKind::Leaf) ++leaf;
    ASSERT_EQ(m_list.FirstLeaf(from), leaf);
  }
  EXPECT_EQ(Entries(), plain);
}

}  // namespace
