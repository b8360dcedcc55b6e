// Points that are made by name at run time.
#include "quor/runtime/process/named_points.h"

#include <set>
#include <thread>

#include "fake_service.h"
#include "quor/logger.h"
#include "quor/quor.hpp"

namespace {

quor_point* OfLogger(std::string_view name) {
  return quor_logger_point(name.data(), name.size(), "Library");
}
std::string NamesOf(const quor_point* point) {
  return std::string(point->component) + "|" + point->category;
}

TEST(NamedPoints, TheSameNamesAreOnePointAndOthersAreNot) {
  static NamedPoints table;  // its points live as long as the program
  NamedPoints* const points = &table;
  quor_point* const one = points->Find("ab", "c");
  EXPECT_EQ(points->Find(std::string("ab"), std::string("c")), one);
  EXPECT_NE(points->Find("a", "bc"), one);
  EXPECT_NE(points->Find("c", "ab"), one);
  EXPECT_NE(points->Find("ab", ""), one);
  EXPECT_EQ(NamesOf(one), "ab|c");
  EXPECT_EQ(one->settings, QUOR_UNREGISTERED);
  EXPECT_EQ(points->Find({"ab\0x", 4}, "c"), one);  // what a C string keeps of it
  EXPECT_EQ(std::strlen(points->Find(std::string(100000, 'x'), "c")->component), 4096u);
  std::string odd = "x";
  for (int i = 0; i < 3000; ++i) odd += "\xC3\xA9";
  EXPECT_EQ(std::strlen(points->Find(odd, "c")->component), 4095u);  // no half of a character
}

TEST(NamedPoints, MoreNamesThanFitShareAPointThatSaysSo) {
  static NamedPoints table;  // its points live as long as the program
  NamedPoints* const points = &table;
  std::set<quor_point*> made;
  for (std::size_t i = 0; i < NamedPoints::kMost; ++i)
    made.insert(points->Find("Many", std::to_string(i)));
  EXPECT_EQ(made.size(), NamedPoints::kMost);
  quor_point* const further = points->Find("Many", "further");
  EXPECT_EQ(NamesOf(further), "Quor|(no room for more trace points)");
  EXPECT_EQ(points->Find("Others", "too"), further);
  EXPECT_EQ(NamesOf(points->Find("Many", "17")), "Many|17");  // what is there stays
}

TEST(NamedPoints, ThreadsThatAskAtOnceGetTheSamePoint) {
  static NamedPoints table;  // its points live as long as the program
  NamedPoints* const points = &table;
  constexpr int kThreads = 4, kNames = 500;
  std::vector<std::vector<quor_point*>> found(kThreads);
  std::vector<std::thread> threads;
  for (auto& mine : found)
    threads.emplace_back([&mine, &points] {
      for (int i = 0; i < kNames; ++i) mine.push_back(points->Find("Name", std::to_string(i)));
    });
  for (std::thread& thread : threads) thread.join();
  for (const auto& mine : found) EXPECT_EQ(mine, found[0]);
  // Points that lost the race take no room.
  for (std::size_t i = kNames; i < NamedPoints::kMost; ++i)
    EXPECT_EQ(NamesOf(points->Find("Name", std::to_string(i))), "Name|" + std::to_string(i));
}

TEST(NamedPoints, ALoggersNameIsComponentAndCategory) {
  EXPECT_EQ(NamesOf(OfLogger("orders.db.pool")), "orders|db.pool");
  EXPECT_EQ(NamesOf(OfLogger("orders")), "orders|Log");
  EXPECT_EQ(NamesOf(OfLogger("")), "Log|Library");
  EXPECT_EQ(NamesOf(OfLogger(".hidden")), ".hidden|Log");
  EXPECT_EQ(NamesOf(OfLogger("open.")), "open.|Log");
  EXPECT_EQ(NamesOf(quor_named_point(nullptr, 7, nullptr, 7)), "|");
}

TEST(NamedPoints, TheyAreSwitchedAndTracedLikeOthers) {
  FakeService service;
  TracedChild app([](TracedChild&) {
    quor_point* const point = quor_named_point("Orders", 6, "Db", 2);
    QUOR_TRACE_WARN(*point, "from {}", "afar");
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("from afar"); }));
  EXPECT_EQ(seen->m_traces.back().component + "/" + seen->m_traces.back().category, "Orders/Db");
}

}  // namespace
