// The statistics beside the window whose traces they count.
#include "statistics/window/ui/statistics_face.h"

#include <QTreeView>

#include "docview/commands/command_ids.h"
#include "shell/child_frame.h"
#include "shell_fixture.h"

namespace {

class StatisticsTest : public ShellTest {
 protected:
  void OpenTraces() {
    TrcImage image;
    image.Name(7, "web").Name(8, "Net").Name(9, "Job queue");
    for (int i = 0; i < 6; ++i)
      image.Trace({.text = "trace " + std::to_string(i),
                   .machine = 7,
                   .component = static_cast<NameId>(i % 3 ? 9 : 8)});
    const std::string path = m_dir.File("web.trc");
    image.WriteTo(path);
    ASSERT_TRUE(Open(path));
  }
  // Null: it is not open.
  static StatisticsFace* Statistics() {
    for (QWidget* const widget : QApplication::topLevelWidgets())
      if (auto* const face = dynamic_cast<StatisticsFace*>(widget); face && face->isVisible())
        return face;
    return nullptr;
  }
  static QTreeView& Rows() {
    return *Statistics()->findChild<QTreeView*>(QString::number(CStatisticsDlg::kList));
  }
  static std::string Cell(int row, int column) {
    const QAbstractItemModel& model = *Rows().model();
    return model.data(model.index(row, column)).toString().toStdString();
  }
  int RowCount() { return View(*Frame().Children()[0])->List().ItemCount(); }
};

}  // namespace

TEST_F(StatisticsTest, ADoubleClickFiltersTheListAndTheCountsFollowIt) {
  Start();
  EXPECT_FALSE(Enabled(ID_VIEW_STATISTICS)) << "there is no list";
  OpenTraces();
  Frame().OnCommand(ID_VIEW_STATISTICS);
  ASSERT_NE(Statistics(), nullptr);
  ASSERT_TRUE(Until([] { return Rows().model()->rowCount() == 2 && Cell(0, 1) == "4"; }));
  EXPECT_EQ(Cell(0, 0), "Job queue");
  const QModelIndex second = Rows().model()->index(1, 0);
  QTest::mouseDClick(Rows().viewport(), Qt::LeftButton, {}, Rows().visualRect(second).center());
  ASSERT_TRUE(Until([this] { return RowCount() == 2; }));
  EXPECT_TRUE(Until([] { return Rows().model()->rowCount() == 1 && Cell(0, 0) == "Net"; }));
  EXPECT_EQ(
      dynamic_cast<CTraceChildFrame&>(*Frame().Children()[0]).ShownPane()->m_filter.where->Text(),
      "component == Net");
  Frame().OnCommand(ID_VIEW_FILTERBACK);
  EXPECT_TRUE(Until([] { return Rows().model()->rowCount() == 2; }));
}

TEST_F(StatisticsTest, TheCommandClosesItAndTheEndOfTheWindowDoes) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_STATISTICS);
  ASSERT_NE(Statistics(), nullptr);
  Frame().OnCommand(ID_VIEW_STATISTICS);
  EXPECT_TRUE(Until([] { return !Statistics(); }));
  Frame().OnCommand(ID_VIEW_STATISTICS);
  ASSERT_NE(Statistics(), nullptr);
  Frame().Children()[0]->OnClose();
  EXPECT_TRUE(Until([] { return !Statistics(); }));
}

TEST_F(StatisticsTest, TheTreeIsCountedAsTheListIs) {
  Start();
  OpenTraces();
  Frame().OnCommand(ID_VIEW_STATISTICS);
  ASSERT_TRUE(Until([] { return Rows().model()->rowCount() == 2; }));
  Frame().OnCommand(ID_VIEW_PROC);
  Settle();
  ASSERT_NE(Statistics(), nullptr);
  EXPECT_TRUE(Until([] { return Rows().model()->rowCount() == 2 && Cell(0, 1) == "4"; }));
}
