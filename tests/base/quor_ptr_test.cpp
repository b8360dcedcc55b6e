#include "base/quor_ptr.h"

#include <gtest/gtest.h>

namespace {

int g_alive = 0;

template <class Base>
class Counted : public Base {
 public:
  Counted() { ++g_alive; }
  ~Counted() override { --g_alive; }
};

template <class Base>
class QuorPtrTest : public testing::Test {};
using Kinds = testing::Types<QuorRef::Ref_t, QuorRef::MTRef_t>;
TYPED_TEST_SUITE(QuorPtrTest, Kinds);

TYPED_TEST(QuorPtrTest, TheLastReferenceDestroysTheObjectThroughItsVirtualDestructor) {
  {
    QuorPtr<TypeParam> first = new Counted<TypeParam>;
    {
      const QuorPtr<TypeParam> second = first;
      EXPECT_TRUE(second == first);
    }
    EXPECT_EQ(g_alive, 1);
  }
  EXPECT_EQ(g_alive, 0);
}

TYPED_TEST(QuorPtrTest, AssignmentAndMoveKeepTheCountsInBalance) {
  QuorPtr<TypeParam> a = new Counted<TypeParam>, b = new Counted<TypeParam>;
  a = b;
  EXPECT_EQ(g_alive, 1);
  QuorPtr<TypeParam>& same = a;
  a = same;
  EXPECT_EQ(g_alive, 1);
  QuorPtr<TypeParam> c = std::move(a);
  EXPECT_FALSE(a);
  b = nullptr;
  EXPECT_EQ(g_alive, 1);
  c = nullptr;
  EXPECT_EQ(g_alive, 0);
}

TYPED_TEST(QuorPtrTest, NullIsAllowedAndComparesLikeAPointer) {
  QuorPtr<TypeParam> none;
  const QuorPtr<TypeParam> other = none;
  EXPECT_FALSE(none);
  EXPECT_TRUE(none == other);
  auto* const object = new Counted<TypeParam>;
  none = object;
  EXPECT_TRUE(none == object);
  EXPECT_FALSE(none == other);
}

}  // namespace
