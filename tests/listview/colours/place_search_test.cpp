// The places of traces, found from where others were found.
#include "listview/colours/place_search.h"

#include <gtest/gtest.h>

#include <random>

#include "support/make_event.h"

namespace {

TEST(PlaceSearch, EachTraceIsFoundFromAnyOtherAlsoAfterTrims) {
  TraceList_t list;
  for (int i = 0; i < 3000; ++i) list.push_back(MakeEvent({}).release());
  PlaceSearch search(list);
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    const std::size_t place = random() % list.size();
    search.BeginPage();
    ASSERT_EQ(search.Find(*list[place]), place);
    for (int i = 0; i < 3; ++i) list.PopFront();
    if (round % 5 == 0) list.push_back(MakeEvent({}).release());
  }
}

TEST(PlaceSearch, ATraceThatIsFarAwayIsFoundInSeveralPages) {
  TraceList_t list;
  const EventPtr event = MakeEvent({});
  const std::size_t count = 2 * PlaceSearch::kPerPage + 1000;
  for (std::size_t i = 0; i < count; ++i) list.EmplaceRecord(event->Record());
  PlaceSearch search(list);
  const TraceEvent_i& last = *list[count - 1];
  EXPECT_EQ(search.Find(last), std::nullopt);
  EXPECT_EQ(search.Find(*list[0]), std::nullopt) << "the page is over";
  search.BeginPage();
  EXPECT_EQ(search.Find(last), std::nullopt);
  search.BeginPage();
  EXPECT_EQ(search.Find(last), count - 1);
  EXPECT_EQ(search.Find(*list[count - 100]), count - 100) << "it is near";
}

TEST(PlaceSearch, ATraceThatIsNotInTheListIsNotSoughtForEver) {
  TraceList_t list;
  const EventPtr other = MakeEvent({});
  PlaceSearch search(list);
  EXPECT_EQ(search.Find(*other), 0u);
  for (int i = 0; i < 700; ++i) list.push_back(MakeEvent({}).release());
  EXPECT_EQ(search.Find(*other), list.size());
}

}  // namespace
