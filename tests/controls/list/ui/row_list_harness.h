// A row list on the screen for tests, with an owner whose cells the test sets.
#pragma once

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTest>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "controls/list/ui/row_list_widget.h"
#include "listview/rows/ui/severity_icons.h"
#include "support/trace_columns.h"

class CellsOwner final : public RowListOwner {
 public:
  std::string RowListText(int row, ListColumn column) override {
    ++asked;
    const auto text = texts.find({row, column});
    return text == texts.end() ? std::to_string(row) : text->second;
  }
  int RowListIcon(int row) override { return icons.count(row) ? icons.at(row) : -1; }
  RowTint RowListTint(int row) override { return tints.count(row) ? tints.at(row) : RowTint::None; }
  std::optional<RowColours> RowListColours(int row) override {
    EXPECT_TRUE(painting);
    if (!colours.count(row)) return std::nullopt;
    return colours.at(row);
  }
  void OnRowListPaint(bool begins) override { painting = begins; }
  std::optional<RowMark> RowListMark(int row) override {
    if (!marks.count(row)) return std::nullopt;
    return marks.at(row);
  }
  bool OnRowListDelete() override {
    if (takesDelete) reported.push_back("delete");
    return takesDelete;
  }
  std::vector<HitRange> RowListHits(int row, ListColumn column) override {
    const auto hit = hits.find({row, column});
    return hit == hits.end() ? std::vector<HitRange>() : hit->second;
  }
  std::string RowListEmptyText() override { return emptyText; }
  void OnRowStateChanged(int row, unsigned, unsigned newState) override {
    reported.push_back(std::to_string(row) + ":" + std::to_string(newState));
  }
  void OnRowClicked(int row) override { reported.push_back("click " + std::to_string(row)); }
  void OnRowDoubleClicked(int row) override { reported.push_back("double " + std::to_string(row)); }
  void OnRowListContextMenu(int x, int y) override { menus.emplace_back(x, y); }
  bool OnColumnResizing(ListColumn, int widthPx) override {
    asking.push_back(widthPx);
    return widthPx < 16;
  }
  void OnColumnResized(ListColumn column, int widthPx) override {
    resized.emplace_back(column, widthPx);
  }
  void OnColumnsReordered() override { ++reordered; }

  std::vector<std::string> Reported() { return std::exchange(reported, {}); }

  std::map<std::pair<int, ListColumn>, std::string> texts;
  std::map<int, int> icons;
  std::map<int, RowTint> tints;
  std::map<int, RowColours> colours;
  std::map<int, RowMark> marks;
  bool takesDelete = false;
  bool painting = false;
  std::map<std::pair<int, ListColumn>, std::vector<HitRange>> hits;
  std::string emptyText;
  std::vector<std::string> reported;
  std::vector<std::pair<int, int>> menus;
  std::vector<int> asking;
  std::vector<std::pair<ListColumn, int>> resized;
  int reordered = 0, asked = 0;
};

// A shown list with all columns, `page` rows high.
class ShownList {
 public:
  explicit ShownList(int rows, int page = 10, int columnWidth = 60)
      : list(owner, std::make_unique<SeverityIcons>(), "Traces") {
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    InsertTraceColumns(list.Header(), columnWidth);
    list.resize(15 * columnWidth + 40, 100);
    list.show();
    SetPage(page);
    list.SetItemCount(rows);
    list.activateWindow();
    list.setFocus();
    QApplication::processEvents();
  }
  void SetPage(int rows) {
    const int around = list.height() - list.viewport()->height();
    list.resize(list.width(), around + rows * list.RowHeight());
  }
  // The middle of a row, in the column "Count".
  QPoint At(int row) const {
    return list.RowRect(row).center() + QPoint(90 - list.RowRect(row).center().x(), 0);
  }
  void Click(int row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, At(row));
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&list, key, modifiers);
  }
  // "2 4-6 f5": the selected rows and the focused one.
  std::string States() {
    std::string text;
    for (int row = list.NextItem(-1, kRowSelected); row != -1;) {
      int last = row;
      while (list.NextItem(last, kRowSelected) == last + 1) ++last;
      text += std::to_string(row) + (last > row ? "-" + std::to_string(last) : "") + " ";
      row = list.NextItem(last, kRowSelected);
    }
    const int focus = list.NextItem(-1, kRowFocused);
    return text + "f" + std::to_string(focus);
  }
  QImage Picture() { return list.viewport()->grab().toImage(); }

  CellsOwner owner;
  QtRowList list;
};
