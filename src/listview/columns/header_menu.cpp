#include "listview/columns/header_menu.h"

#include <algorithm>
#include <utility>

#include "listview/columns/time_columns.h"

void HeaderMenu::Open(std::optional<ListColumn> column, int screenXPx, int screenYPx) {
  m_choices.clear();
  m_runs.clear();
  const std::vector<Column> showing = Showing();
  if (column) {
    m_last = column->As<Column>();
    AddForColumn(*m_last);
  } else if (!showing.empty()) {
    const auto last = m_last ? std::ranges::find(showing, *m_last) : showing.end();
    const auto place = last == showing.end() ? showing.begin() : last;
    AddForColumn(*place);
    AddBeside(static_cast<std::size_t>(place - showing.begin()), screenXPx, screenYPx);
  }
  Add({"Fit &Columns"}, [this] { m_actions.fitAll(); });
  Add({}, {});
  for (const ColumnInfo& info : kColumns) AddShown(info.column);
  for (const Column time : kTimeColumns) AddShown(time);
  const std::weak_ptr<char> mark = m_mark;
  m_host.OpenMenu(m_choices, screenXPx, screenYPx, [this, mark](std::size_t place) {
    // What runs may end this.
    if (!mark.expired()) std::function<void()>(m_runs.at(place))();
  });
}

void HeaderMenu::Add(MenuChoice choice, std::function<void()> run) {
  m_choices.push_back(std::move(choice));
  m_runs.push_back(std::move(run));
}

void HeaderMenu::AddForColumn(Column column) {
  const std::string name = std::string("\"") + InfoOf(column).header + "\"";
  Add({"&Hide " + name, column != Column::Trace},
      [this, column] { m_actions.show(column, false); });
  Add({"&Fit " + name}, [this, column] { m_actions.fit(column); });
  const ListOrder order = m_header.GetColumnOrder();
  const bool last = !order.empty() && ListColumn(order.back()) == ListColumn(column);
  Add({"Move " + name + " to the &End", !last}, [this, column] { MoveToEnd(column); });
  Add({}, {});
}

std::vector<Column> HeaderMenu::Showing() const {
  std::vector<Column> showing;
  for (const std::int32_t index : m_header.GetColumnOrder())
    if (m_header.ColumnWidth(index) > 0) showing.push_back(ListColumn(index).As<Column>());
  return showing;
}

// Opens itself again for the column beside the one at this place.
void HeaderMenu::AddBeside(std::size_t place, int screenXPx, int screenYPx) {
  const std::vector<Column> showing = Showing();
  const auto add = [&](const char* text, bool there, std::size_t to) {
    const Column column = showing[there ? to : place];
    const std::string name = there ? " \"" + std::string(InfoOf(column).header) + "\"" : "";
    Add({text + name, there}, [this, column, screenXPx, screenYPx] {
      m_last = column;
      Open(std::nullopt, screenXPx, screenYPx);
    });
  };
  add("&Next Column", place + 1 < showing.size(), place + 1);
  add("&Previous Column", place > 0, place - 1);
  Add({}, {});
}

void HeaderMenu::AddShown(Column column) {
  const bool shown = m_actions.isShown(column);
  // It could not be hidden, but a store may say that it is.
  const bool enabled = column != Column::Trace || !shown;
  Add({InfoOf(column).header, enabled, shown},
      [this, column, shown] { m_actions.show(column, !shown); });
}

void HeaderMenu::MoveToEnd(Column column) {
  ListOrder order = m_header.GetColumnOrder();
  const auto index = static_cast<std::int32_t>(column);
  const auto place = std::ranges::find(order, index);
  if (place == order.end()) return;
  std::rotate(place, place + 1, order.end());
  m_header.SetColumnOrder(order);
  m_actions.storeOrder();
}
