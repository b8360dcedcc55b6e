// The statistics on the screen.
#include "statistics/window/ui/statistics_face.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>

#include "docview/ui/qt_host.h"
#include "settings/registry.h"
#include "statistics/window/counted_pane.h"
#include "support/make_event.h"
#include "support/qt_test_main.h"
#include "support/temp_dir.h"

namespace {

class StatisticsFaceTest : public testing::Test {
 protected:
  StatisticsFaceTest() {
    SetSettingsFile(m_folder.File("settings.ini"));
    m_host.RegisterFace<CStatisticsDlg, StatisticsFace>();
    m_document.m_loading = false;
    for (const NameId component : {1, 2, 2}) {
      m_document.m_names[component].name = component == 1 ? "Net" : "Sql";
      TraceFields fields;
      fields.component = component;
      fields.text = component == 1 ? "took 5 ms" : "done";
      m_document.AddTrace(MakeEvent(fields).release());
    }
    m_dialog = std::make_unique<CStatisticsDlg>(
        m_host, [this] { return &m_pane; },
        [this](const std::string& text) { m_taken.push_back(text); });
  }
  ~StatisticsFaceTest() override { SetSettingsFile(""); }
  static StatisticsFace* Window() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* const window = dynamic_cast<StatisticsFace*>(widget);
      if (window && window->isVisible()) return window;
    }
    return nullptr;
  }
  template <class Widget>
  static Widget& Part(unsigned id) {
    return *Window()->findChild<Widget*>(QString::number(id));
  }
  static QTreeView& List() { return Part<QTreeView>(CStatisticsDlg::kList); }
  static std::string Cell(int row, int column) {
    const QAbstractItemModel& model = *List().model();
    return model.data(model.index(row, column)).toString().toStdString();
  }
  static bool HasRows(int rows) {
    return QTest::qWaitFor([rows] { return List().model()->rowCount() == rows; });
  }

  TempDir m_folder;
  QtHost m_host;
  CTraceDoc m_document{m_host};
  CountedPane m_pane{m_document};
  std::vector<std::string> m_taken;
  std::unique_ptr<CStatisticsDlg> m_dialog;
};

TEST_F(StatisticsFaceTest, ShowsTheRowsAndItsStatus) {
  ASSERT_NE(Window(), nullptr);
  EXPECT_EQ(Window()->windowTitle(), QStringLiteral("Statistics"));
  ASSERT_TRUE(HasRows(2));
  EXPECT_EQ(Cell(0, 0), "Sql");
  EXPECT_EQ(Cell(0, 1), "2");
  EXPECT_EQ(Cell(1, 2), "33.3 %");
  EXPECT_TRUE(QTest::qWaitFor([] {
    return Part<QLabel>(CStatisticsDlg::kStatus).text() == QStringLiteral("3 traces, 2 values");
  }));
  EXPECT_FALSE(Window()->isModal());
}

TEST_F(StatisticsFaceTest, WithRoomEnoughAllIsShownWhole) {
  ASSERT_TRUE(HasRows(2));
  Window()->resize(1200, 500);
  QApplication::processEvents();
  for (int column = 1; column < 6; ++column) {
    const QSize cell = List().sizeHintForIndex(List().model()->index(0, column));
    EXPECT_LE(cell.width(), List().columnWidth(column)) << column;
    EXPECT_LE(List().header()->sectionSizeHint(column), List().columnWidth(column)) << column;
  }
  EXPECT_GT(List().columnWidth(0), List().columnWidth(5));
  EXPECT_FALSE(List().horizontalScrollBar()->isVisible());
}

TEST_F(StatisticsFaceTest, TheChoiceCountsByAnotherField) {
  ASSERT_TRUE(HasRows(2));
  Part<QComboBox>(CStatisticsDlg::kField).setCurrentIndex(static_cast<int>(StatField::Pattern));
  ASSERT_TRUE(QTest::qWaitFor([] { return Cell(1, 0) == "took # ms"; }));
}

TEST_F(StatisticsFaceTest, KeysLeadToEverything) {
  ASSERT_TRUE(HasRows(2));
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  EXPECT_TRUE(List().hasFocus());
  QTest::keyClick(&List(), Qt::Key_1, Qt::ControlModifier);
  EXPECT_EQ(Cell(0, 0), "Net");
  QTest::keyClick(&List(), Qt::Key_Down);
  QTest::keyClick(&List(), Qt::Key_Home);
  ASSERT_TRUE(Part<QPushButton>(CDialog::kIdOk).isEnabled());
  QTest::keyClick(Window(), Qt::Key_Return);
  EXPECT_EQ(m_taken, (std::vector<std::string>{"component == Net"}));
  ASSERT_NE(Window(), nullptr) << "it stays open";
  QTest::keyClick(Window(), Qt::Key_B, Qt::AltModifier);
  EXPECT_TRUE(Part<QComboBox>(CStatisticsDlg::kField).hasFocus());
  QTest::keyClick(Window(), Qt::Key_Escape);
  EXPECT_EQ(Window(), nullptr);
  EXPECT_TRUE(m_dialog->Ended());
}

TEST_F(StatisticsFaceTest, WithoutASelectedRowThereIsNothingToTake) {
  ASSERT_TRUE(HasRows(2));
  EXPECT_FALSE(Part<QPushButton>(CDialog::kIdOk).isEnabled());
  const QModelIndex row = List().model()->index(1, 0);
  QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, List().visualRect(row).center());
  EXPECT_EQ(m_taken, (std::vector<std::string>{"component == Net"}));
}

TEST_F(StatisticsFaceTest, EveryControlHasANameForScreenReaders) {
  for (const unsigned id : {CStatisticsDlg::kField, CStatisticsDlg::kList}) {
    auto* const widget = Window()->findChild<QWidget*>(QString::number(id));
    ASSERT_NE(widget, nullptr);
    EXPECT_FALSE(widget->accessibleName().isEmpty()) << id;
  }
}

TEST_F(StatisticsFaceTest, AScreenReaderIsToldWhatWasCounted) {
  ASSERT_TRUE(HasRows(2));
  QAccessibleInterface* const status =
      QAccessible::queryAccessibleInterface(&Part<QLabel>(CStatisticsDlg::kStatus));
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(status->text(QAccessible::Name), QStringLiteral("3 traces, 2 values"));
}

}  // namespace
