#include "statistics/key_table.h"

#include <gtest/gtest.h>

namespace {

TEST(KeyTable, NumbersKeysInTheirOrderAndFindsThem) {
  KeyTable table;
  EXPECT_FALSE(table.Find("a", KeyTable::HashOf("a")));
  for (int i = 0; i < 5000; ++i) {
    const std::string key = "key " + std::to_string(i);
    ASSERT_EQ(table.Insert(key, KeyTable::HashOf(key)), static_cast<std::uint32_t>(i));
  }
  for (std::uint32_t i = 0; i < 5000; ++i) {
    const std::string key = "key " + std::to_string(i);
    ASSERT_EQ(table.Find(key, KeyTable::HashOf(key)), i);
    ASSERT_EQ(table[i], key);
  }
  EXPECT_FALSE(table.Find("key 5000", KeyTable::HashOf("key 5000")));
  table.Clear();
  EXPECT_EQ(table.Size() + table.Bytes(), 0u);
  EXPECT_FALSE(table.Find("key 1", KeyTable::HashOf("key 1")));
}

TEST(KeyTable, KeysOfOneHashAreToldApartByTheirBytes) {
  KeyTable table;
  for (const char* const key : {"a", "b", "", "ab"}) table.Insert(key, 7);
  EXPECT_EQ(table.Find("a", 7), 0u);
  EXPECT_EQ(table.Find("b", 7), 1u);
  EXPECT_EQ(table.Find("", 7), 2u);
  EXPECT_EQ(table.Find("ab", 7), 3u);
  EXPECT_FALSE(table.Find("ba", 7));
}

TEST(KeyTable, EveryByteOfAKeyCountsInItsHash) {
  for (std::size_t length = 1; length < 70; ++length) {
    const std::string key(length, 'x');
    EXPECT_NE(KeyTable::HashOf(key), KeyTable::HashOf(key.substr(1)));
    for (std::size_t i = 0; i < length; ++i) {
      std::string other = key;
      other[i] = 'y';
      EXPECT_NE(KeyTable::HashOf(key), KeyTable::HashOf(other)) << length << " " << i;
    }
  }
}

}  // namespace
