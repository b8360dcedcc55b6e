// The pop-up menu of a list's header: which columns show, how wide they are, and a column out of
// the way.
//
// Shape    What it changes is what the Options dialog and drags of the header store, so all windows
//          show the same columns. The column "Trace" cannot be hidden.
// Owner    Borrows host and list. After its end an open menu does nothing.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "controls/list/row_list.h"
#include "docview/host.h"
#include "listview/columns/columns.h"

class HeaderMenu {
 public:
  struct Actions {
    std::function<bool(Column)> isShown;
    std::function<void(Column, bool)> show;  // in all windows
    std::function<void(Column)> fit;
    std::function<void()> fitAll;
    std::function<void()> storeOrder;  // the list has another order
  };
  HeaderMenu(Host& host, ListHeader& header, Actions actions)
      : m_host(host), m_header(header), m_actions(std::move(actions)) {}

  // `column`: the one that it was opened on. None: it is for the column that it was for last, at
  // first for the first one that shows, and leads to those beside it; so the keyboard reaches all.
  void Open(std::optional<ListColumn> column, int screenXPx, int screenYPx);

 private:
  void Add(MenuChoice choice, std::function<void()> run);
  void AddForColumn(Column column);
  void AddBeside(std::size_t place, int screenXPx, int screenYPx);
  // In their order on the screen.
  std::vector<Column> Showing() const;
  void AddShown(Column column);
  void MoveToEnd(Column column);

  Host& m_host;
  ListHeader& m_header;
  const Actions m_actions;
  std::optional<Column> m_last;  // it was opened for
  std::vector<MenuChoice> m_choices;
  std::vector<std::function<void()>> m_runs;
  std::shared_ptr<char> m_mark = std::make_shared<char>();  // held by nobody else
};
