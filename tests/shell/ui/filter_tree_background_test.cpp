// A filter text that is applied to a tree of a million traces, in a real window: how long the
// window stands still, and what Escape leaves.
#include "filter_background_fixture.h"
#include "tree/proc/proc_view.h"

namespace {

class FilterTreeBackground : public FilterBackgroundTest {
 protected:
  static constexpr int kTraces = 1'200'000, kThreads = 4, kPerImage = 12'000;

  // In each thread blocks of eight traces, then two traces outside of blocks.
  std::string LargeFile() {
    const std::string path = m_dir.File("large.trc");
    std::ofstream file(path, std::ios::binary);
    TrcImage names;
    names.Name(7, "web").Name(8, "Net").Name(9, "812");
    for (int thread = 0; thread < kThreads; ++thread)
      names.Name(static_cast<NameId>(10 + thread), "worker " + std::to_string(thread));
    file << names.Bytes();
    for (int from = 0; from < kTraces; from += kPerImage) {
      TrcImage part{std::string_view()};
      for (int i = from; i < from + kPerImage; ++i) {
        const int place = i / kThreads % 10;
        part.Trace({.text = place == 0   ? "Begin: an order"
                            : place == 7 ? "End: an order"
                                         : "order 12345 of the cart was taken",
                    .count = static_cast<std::uint32_t>(i),
                    .machine = 7,
                    .app = 8,
                    .tic = static_cast<std::uint64_t>(i + 1),
                    .pid = 9,
                    .tid = static_cast<NameId>(10 + i % kThreads)});
      }
      file << part.Bytes();
    }
    return path;
  }
  CProcView& Tree() { return dynamic_cast<CProcView&>(*Child().ShownPane()); }
  // The last thread is open, and its last trace selected.
  void OpenTree() {
    OpenWithLine(LargeFile());
    auto& list = dynamic_cast<CTraceView&>(*Child().ShownPane());
    ASSERT_EQ(list.List().ItemCount(), kTraces);
    list.List().SetItemState(kTraces - 1, kRowFocused, kRowFocused);
    Frame().OnCommand(ID_VIEW_PROC);
    Settle();
    ASSERT_TRUE(Child().IsTreeShown());
    ASSERT_TRUE(Until([this] { return Tree().CurrentEvent() != nullptr; }));
    ASSERT_EQ(Tree().CurrentEvent()->GetSequenceNumber(), kTraces - 1U);
  }
  void ApplyAndTell(const char* text) {
    Type(text);
    int most = 0;
    LoopWatch watch(Tree(), [&] {
      most = std::max(most, Tree().FilterProgress().value_or(0));
      EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "a box";
    });
    QTest::keyClick(&Line().Edit(), Qt::Key_Return);
    const qint64 key = watch.Now();
    EXPECT_TRUE(Line().StopButton().isVisible());
    ASSERT_TRUE(Until([this] { return !Tree().FilterProgress(); }));
    std::cout << text << ": the key " << key / 1000 << " us, all " << watch.Now() / 1000
              << " us, longest stillness " << watch.Longest() / 1000 << " us, " << watch.Turns()
              << " turns\n";
    EXPECT_GE(watch.Turns(), 3) << "turns of the loop while the text was applied";
    EXPECT_GT(most, 100) << "the line shows a progress";
    EXPECT_FALSE(Line().StopButton().isVisible());
  }
};

TEST_F(FilterTreeBackground, TheLoopOfTheWindowGoesOnWhileATreeOfAMillionTracesIsFiltered) {
  ASSERT_NO_FATAL_FAILURE(OpenTree());
  // All of them, so that most of the work is to file them.
  ASSERT_NO_FATAL_FAILURE(ApplyAndTell("tic > 0"));
  EXPECT_EQ(Tree().Model().TraceCount(), kTraces);
  EXPECT_EQ(Tree().CurrentEvent()->GetSequenceNumber(), kTraces - 1U);
  ASSERT_NO_FATAL_FAILURE(ApplyAndTell("text matches \"([a-z]+ )*order$\""));
  EXPECT_EQ(Tree().Model().TraceCount(), kTraces / 5);
  EXPECT_EQ(Tree().CurrentEvent(), nullptr) << "no later trace is shown";
}

TEST_F(FilterTreeBackground, EscapeInTheLineLeavesTheTreeAndTheSelectionAsTheyAre) {
  ASSERT_NO_FATAL_FAILURE(OpenTree());
  const TreeItem selected = Tree().Tree().SelectedItem();
  Type("text matches \"([a-z]+ )*order$\"");
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(Until([this] { return Tree().FilterProgress().value_or(0) > 100; }));
  QTest::keyClick(&Line().Edit(), Qt::Key_Escape);
  EXPECT_FALSE(Tree().FilterProgress());
  EXPECT_EQ(Tree().Model().TraceCount(), kTraces);
  EXPECT_EQ(Tree().Tree().SelectedItem(), selected);
  EXPECT_EQ(Tree().m_filter.where, nullptr);
  EXPECT_FALSE(Line().StopButton().isVisible());
}

TEST_F(FilterTreeBackground, AWindowIsClosedWhileATextIsAppliedToItsTree) {
  ASSERT_NO_FATAL_FAILURE(OpenTree());
  Type("text matches \"([a-z]+ )*order$\"");
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(Tree().FilterProgress());
  Tree().GetDocument()->OnCloseDocument();
  Settle();
  EXPECT_TRUE(Frame().Children().empty());
}

}  // namespace
