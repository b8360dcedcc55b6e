// A filter text that is applied to millions of traces, in a real window: how long the window stands
// still, the progress in the line, and what Escape leaves.
#include "filter_background_fixture.h"

namespace {

constexpr int kBlock = 1000, kBlocks = 2200;

class FilterBackground : public FilterBackgroundTest {
 protected:
  // Of each thousand traces one has "needle"; the others stand in a text that is searched slowly.
  std::string LargeFile() {
    TrcImage names, block{std::string_view()};
    names.Name(7, "web").Name(8, "Net");
    for (int i = 0; i < kBlock; ++i)
      block.Trace({.text = i == 400 ? "a needle" : "order 12345 of the cart was taken",
                   .machine = 7,
                   .component = 8,
                   .tic = static_cast<std::uint64_t>(i + 1)});
    const std::string path = m_dir.File("large.trc");
    std::ofstream file(path, std::ios::binary);
    file << names.Bytes();
    for (int i = 0; i < kBlocks; ++i) file << block.Bytes();
    return path;
  }
  CTraceView& List() { return *View(*Frame().MDIGetActive()); }
  void OpenLargeFileWithLine() {
    OpenWithLine(LargeFile());
    ASSERT_EQ(List().List().ItemCount(), kBlock * kBlocks);
  }
};

}  // namespace

TEST_F(FilterBackground, TheLoopOfTheWindowGoesOnWhileMillionsOfTracesAreFiltered) {
  OpenLargeFileWithLine();
  Type("text matches \"([a-z]+ )*needle\"");
  qint64 firstRows = 0;
  int growths = 0, count = kBlock * kBlocks;
  LoopWatch watch(List(), [&] {
    const int now = List().List().ItemCount();
    if (now != std::exchange(count, now)) ++growths;
    if (firstRows == 0 && growths > 0) firstRows = watch.Now();
  });
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  const qint64 key = watch.Now();
  EXPECT_TRUE(Line().Bar().isVisible());
  EXPECT_TRUE(Line().StopButton().isVisible());
  ASSERT_TRUE(Until([this] { return !List().FilterProgress(); }));
  const qint64 all = watch.Now();
  EXPECT_EQ(List().List().ItemCount(), kBlocks);
  EXPECT_EQ(List().RowListText(kBlocks - 1, Column::Trace), "a needle");
  EXPECT_FALSE(Line().Bar().isVisible());
  EXPECT_GE(watch.Turns(), 3) << "turns of the loop while the text was applied";
  EXPECT_GE(growths, 1) << "rows show before all of them are there";
  std::cout << "filter in a window: the key " << key / 1000 << " us, first rows "
            << firstRows / 1000 << " us, all " << all / 1000 << " us, longest stillness "
            << watch.Longest() / 1000 << " us, " << watch.Turns() << " turns, " << growths
            << " times rows\n";
}

TEST_F(FilterBackground, EscapeInTheLineStopsATextAndTheNextOneClosesTheLine) {
  OpenLargeFileWithLine();
  Type("text matches \"([a-z]+ )*needle\"");
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(List().FilterProgress());
  ASSERT_TRUE(Until([this] { return List().List().ItemCount() < kBlock * kBlocks; }));
  ASSERT_TRUE(List().FilterProgress()) << "rows show, and it goes on";
  QTest::keyClick(&Line().Edit(), Qt::Key_Escape);
  EXPECT_EQ(List().List().ItemCount(), kBlock * kBlocks);
  ASSERT_TRUE(Until([this] { return !List().FilterProgress(); }));
  EXPECT_FALSE(Line().StopButton().isVisible());
  EXPECT_EQ(Line().Edit().text(), QStringLiteral("text matches \"([a-z]+ )*needle\""));
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(List().FilterProgress());
  QTest::mouseClick(&Line().StopButton(), Qt::LeftButton);
  EXPECT_FALSE(List().FilterProgress());
  EXPECT_EQ(List().List().ItemCount(), kBlock * kBlocks);
}

TEST_F(FilterBackground, EscapeInTheRowsStopsATextAndLeavesTheLine) {
  OpenLargeFileWithLine();
  Type("text matches \"([a-z]+ )*needle\"");
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(List().FilterProgress());
  List().List().SetFocus();
  ASSERT_FALSE(Line().Edit().hasFocus());
  for (int press = 0; press < 2; ++press)
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_FALSE(List().FilterProgress());
  EXPECT_EQ(List().List().ItemCount(), kBlock * kBlocks);
  EXPECT_TRUE(Line().isVisible());
}

TEST_F(FilterBackground, AWindowIsClosedWhileItsTextIsApplied) {
  OpenLargeFileWithLine();
  Type("text matches \"([a-z]+ )*needle\"");
  QTest::keyClick(&Line().Edit(), Qt::Key_Return);
  ASSERT_TRUE(List().FilterProgress());
  QElapsedTimer clock;
  clock.start();
  List().GetDocument()->OnCloseDocument();
  std::cout << "closed after " << clock.nsecsElapsed() / 1000 << " us\n";
  Settle();
  EXPECT_TRUE(Frame().Children().empty());
}
