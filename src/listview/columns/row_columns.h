// The columns of one list: their widths, their order, which of them show. The columns of times are
// inserted when the first of them is shown. A list may show others than the program says, until the
// user chooses in Options for all lists.
//
// Owner    Borrows the list.
// Threads  Interface thread.
#pragma once

#include <vector>

#include "controls/list/row_list.h"
#include "listview/columns/columns.h"
#include "listview/columns/header_menu.h"
#include "views/view_state.h"

class RowColumns {
 public:
  explicit RowColumns(RowList& list) : m_list(list) {}

  // By the settings. Called once.
  void Create();
  // The settings have changed.
  void ShowAndHide();
  // The menu of the header; `changed`: other columns are to be shown, in all windows.
  void OpenMenu(Host& host, std::optional<ListColumn> column, int screenXPx, int screenYPx,
                std::function<void()> changed);
  // The same as fitting each shown column by a double click.
  void Fit();
  bool Refuses(ListColumn column, int widthPx) const;  // a width of a drag
  void TakeWidth(ListColumn column, int widthPx);      // stores it
  void StoreOrder() const;
  ColumnOrder Order() const;  // of the fifteen
  ColumnFlags Flags() const;  // of the fifteen: those of the program, or its own

  // From left to right.
  std::vector<ViewColumn> State() const;
  // Those that are not mentioned come last and stay as they are. If none would be shown, those that
  // are shown stay. Nothing is stored. Returns the headers that no column has.
  std::vector<std::string> SetState(const std::vector<ViewColumn>& columns);
  std::vector<ViewColumn> Standard() const;  // the state of a new list
  bool AreOwn() const { return !m_own.empty(); }

 private:
  static constexpr int kWidthMask = 0xFFFF;  // a control keeps 16 bits of a width

  void Insert(const ColumnInfo& info);
  void InsertTimes();
  void FitOne(Column column);
  void Show(Column column, bool shown);
  int StandardWidth(const ColumnInfo& info) const;
  bool HasTimes() const { return m_widths.size() > kColumns.size(); }
  bool IsShown(Column column) const;
  void FollowProgram();

  RowList& m_list;
  std::vector<int> m_widths;    // by index
  std::vector<bool> m_own;      // is each column shown? Empty: as the program says
  std::vector<bool> m_program;  // what that said when it was looked at last
  unsigned m_choices = 0;
  std::unique_ptr<HeaderMenu> m_menu;  // the one opened last
};
