#include <gtest/gtest.h>

#include <QAccessible>

#include "row_list_harness.h"

namespace {

QAccessibleInterface* Describe(ShownList& s) {
  return QAccessible::queryAccessibleInterface(&s.list);
}
QString Name(QAccessibleInterface* part) {
  return part ? part->text(QAccessible::Name) : QString("no part");
}

}  // namespace

TEST(RowAccessible, IsATableWithANameAllRowsAndTheShownColumns) {
  ShownList s(1'000'000);
  s.list.Header().SetColumnWidth(Column::Stack, 0);
  QAccessibleInterface* table = Describe(s);
  ASSERT_TRUE(table);
  EXPECT_EQ(table->role(), QAccessible::Table);
  EXPECT_EQ(Name(table), "Traces");
  ASSERT_TRUE(table->tableInterface());
  EXPECT_EQ(table->tableInterface()->rowCount(), 1'000'000);
  EXPECT_EQ(table->tableInterface()->columnCount(), 14);
  EXPECT_EQ(table->tableInterface()->columnDescription(1), "Count");
}

TEST(RowAccessible, ChildrenAreTheHeaderAndTheCellsOnView) {
  ShownList s(1'000'000);
  s.list.EnsureVisible(509);
  QAccessibleInterface* table = Describe(s);
  ASSERT_EQ(table->childCount(), 15 * 11);
  EXPECT_EQ(Name(table->child(1)), "Count");
  EXPECT_EQ(table->child(1)->role(), QAccessible::ColumnHeader);
  EXPECT_EQ(Name(table->child(15 + 1)), "500");
  EXPECT_EQ(table->child(15 + 1)->role(), QAccessible::Cell);
  for (const int index : {0, 14, 15, 164})
    EXPECT_EQ(table->indexOfChild(table->child(index)), index);
  EXPECT_EQ(table->child(165), nullptr);
  EXPECT_EQ(table->child(-1), nullptr);
  EXPECT_EQ(table->child(20)->parent(), table);
}

TEST(RowAccessible, CellsSayTheirTextTheirPlaceAndTheirIcon) {
  ShownList s(20);
  s.owner.icons[2] = 2;
  s.owner.texts[{2, Column::Trace}] = "first\nsecond";
  QAccessibleTableInterface* table = Describe(s)->tableInterface();
  EXPECT_EQ(Name(table->cellAt(2, 0)), "Error");
  EXPECT_EQ(Name(table->cellAt(3, 0)), "");
  EXPECT_EQ(Name(table->cellAt(2, 12)), "first second");
  const QRect cell = table->cellAt(2, 1)->rect();
  EXPECT_EQ(cell.topLeft(),
            s.list.viewport()->mapToGlobal(s.list.CellRect(2, Column::Count).topLeft()));
  EXPECT_EQ(table->cellAt(20, 0), nullptr);
  EXPECT_EQ(table->cellAt(0, 15), nullptr);
}

TEST(RowAccessible, ARowHasANameOfItsShownCells) {
  ShownList s(20);
  for (const ColumnInfo& column : kColumns)
    if (column.column != Column::Sev && column.column != Column::Trace)
      s.list.Header().SetColumnWidth(column.column, 0);
  s.owner.icons[2] = 1;
  s.owner.texts[{2, Column::Trace}] = "up";
  QAccessibleTableInterface* table = Describe(s)->tableInterface();
  EXPECT_EQ(table->rowDescription(2), "Sev: Warn, Trace: up");
  EXPECT_EQ(table->cellAt(2, 1)->text(QAccessible::Description), "Sev: Warn, Trace: up");
}

TEST(RowAccessible, StatesAreThoseOfTheRows) {
  ShownList s(20);
  s.list.SetItemState(2, kRowSelected, kRowSelected);
  s.list.SetItemState(3, kRowFocused, kRowFocused);
  QAccessibleInterface* list = Describe(s);
  QAccessibleTableInterface* table = list->tableInterface();
  EXPECT_TRUE(table->cellAt(2, 1)->state().selected);
  EXPECT_FALSE(table->cellAt(3, 1)->state().selected);
  EXPECT_TRUE(table->cellAt(3, 1)->state().focused);
  EXPECT_TRUE(table->cellAt(15, 1)->state().offscreen);
  EXPECT_EQ(table->selectedRows(), QList<int>{2});
  EXPECT_EQ(table->selectedRowCount(), 1);
  EXPECT_TRUE(table->isRowSelected(2));
  EXPECT_EQ(list->focusChild(), table->cellAt(3, 0));
}

TEST(RowAccessible, RowsCanBeSelectedThroughIt) {
  ShownList s(20);
  QAccessibleTableInterface* table = Describe(s)->tableInterface();
  EXPECT_TRUE(table->selectRow(4));
  EXPECT_EQ(s.States(), "4 f-1");
  EXPECT_TRUE(table->unselectRow(4));
  EXPECT_EQ(s.States(), "f-1");
  EXPECT_FALSE(table->selectRow(20));
}

TEST(RowAccessible, ThePartAtAPointIsTheCellOrTheHeaderThere) {
  ShownList s(20);
  QAccessibleInterface* list = Describe(s);
  const QPoint cell = s.list.viewport()->mapToGlobal(s.At(4));
  EXPECT_EQ(Name(list->childAt(cell.x(), cell.y())), "4");
  const QPoint header = s.list.viewport()->mapToGlobal(QPoint(90, -5));
  EXPECT_EQ(Name(list->childAt(header.x(), header.y())), "Count");
}

TEST(RowAccessible, ACellWhoseRowIsGoneIsNoLongerValid) {
  ShownList s(20);
  QAccessibleInterface* cell = Describe(s)->tableInterface()->cellAt(15, 1);
  ASSERT_TRUE(cell->isValid());
  s.list.SetItemCount(5);
  EXPECT_FALSE(cell->isValid());
  EXPECT_EQ(Name(cell), "");
  EXPECT_TRUE(cell->state().invalid);
}

TEST(RowAccessible, WalkingThroughManyRowsKeepsOnlyTheCellsOnView) {
  ShownList s(100'000);
  QAccessibleTableInterface* table = Describe(s)->tableInterface();
  const QAccessible::Id early = QAccessible::uniqueId(table->cellAt(50'000, 1));
  for (int row = 0; row < 10'000; ++row) ASSERT_TRUE(table->cellAt(row, 1));
  EXPECT_EQ(QAccessible::accessibleInterface(early), nullptr);
}

TEST(RowAccessible, TheWayBackToTheEndIsAButtonOfTheListWhileItShows) {
  ShownList s(100);
  QAccessibleInterface* const list = Describe(s);
  const int cells = list->childCount();
  s.list.ShowEndMark(true);
  ASSERT_EQ(list->childCount(), cells + 1);
  QAccessibleInterface* const button = list->child(cells);
  ASSERT_TRUE(button);
  EXPECT_EQ(button->role(), QAccessible::Button);
  EXPECT_EQ(Name(button), "To the end");
  EXPECT_EQ(button->text(QAccessible::Description),
            "The list does not follow. Click to go to its end and follow again");
  EXPECT_EQ(button->parent(), list);
  EXPECT_EQ(list->indexOfChild(button), cells);
  const QPoint middle = button->rect().center();
  EXPECT_EQ(list->childAt(middle.x(), middle.y()), button);
  ASSERT_TRUE(button->actionInterface());
  button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  ASSERT_TRUE(QTest::qWaitFor([&] { return s.list.TopIndex() == 90; }));
  EXPECT_EQ(list->childCount(), cells) << "the list stands at its end";
  EXPECT_EQ(list->child(cells), nullptr);
}
