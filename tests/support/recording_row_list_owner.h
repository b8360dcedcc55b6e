// An owner of a row list that records the list's calls.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "controls/list/row_list.h"

// Records state changes: "5: 0>3".
class RecordingRowListOwner final : public RowListOwner {
 public:
  std::string RowListText(int row, ListColumn column) override {
    const auto text = longTexts.find(row);
    if (text != longTexts.end()) return text->second;
    return std::to_string(row) + "," + std::to_string(column.Index());
  }
  int RowListIcon(int) override { return -1; }
  RowTint RowListTint(int row) override { return tints.count(row) ? tints.at(row) : RowTint::None; }
  std::optional<RowColours> RowListColours(int row) override {
    coloursAsked.insert(row);
    if (painting != 1) reported.push_back("colours asked outside a paint");
    if (!colours.count(row)) return std::nullopt;
    return colours.at(row);
  }
  void OnRowListPaint(bool begins) override {
    painting += begins ? 1 : -1;
    paints += begins;
  }
  std::optional<RowMark> RowListMark(int row) override {
    marksAsked.insert(row);
    if (!marks.count(row)) return std::nullopt;
    return marks.at(row);
  }
  bool OnRowListDelete() override {
    ++deletes;
    if (onDelete) onDelete();
    return takesDelete;
  }
  std::vector<HitRange> RowListHits(int, ListColumn) override { return {}; }
  std::string RowListEmptyText() override { return {}; }
  void OnRowStateChanged(int row, unsigned oldState, unsigned newState) override {
    reported.push_back(std::to_string(row) + ": " + std::to_string(oldState) + ">" +
                       std::to_string(newState));
    if (list && list->GetItemState(row) != newState) reported.push_back("told too early");
  }
  void OnRowClicked(int row) override { clicked.push_back(row); }
  void OnRowDoubleClicked(int row) override { doubleClicked.push_back(row); }
  void OnRowListContextMenu(int, int) override { ++contextMenus; }
  void OnRowListScrolled() override { ++scrolled; }
  void OnHeaderContextMenu(std::optional<ListColumn> column, int, int) override {
    headerMenus.push_back(column ? column->Index() : -1);
  }
  bool OnColumnResizing(ListColumn, int) override {
    ++resizings;
    return refuseResizing;
  }
  void OnColumnResized(ListColumn, int) override { ++resized; }
  void OnColumnsReordered() override { ++reordered; }

  // The records since the last call.
  std::vector<std::string> Reported() { return std::exchange(reported, {}); }

  RowList* list = nullptr;
  std::map<int, std::string> longTexts;  // of rows, in all columns, in place of the short ones
  std::vector<std::string> reported;
  std::vector<int> clicked, doubleClicked, headerMenus;
  std::map<int, RowTint> tints;
  std::map<int, RowColours> colours;
  std::map<int, RowMark> marks;
  std::set<int> coloursAsked, marksAsked;  // rows
  int painting = 0, paints = 0;            // under way, and begun
  std::function<void()> onDelete;
  bool takesDelete = true;
  int deletes = 0;
  int contextMenus = 0, resizings = 0, resized = 0, reordered = 0, scrolled = 0;
  bool refuseResizing = false;
};
