#include "controls/listbox/ui/list_box_widget.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <algorithm>
#include <numeric>

#include "controls/listbox/ui/list_box_model.h"

namespace {

constexpr int kRoomPx = 6;  // around the text of an item, above and below together

class RoomyItems final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize text = QStyledItemDelegate::sizeHint(option, index);
    return {text.width(), option.fontMetrics.height() + kRoomPx};
  }
};

}  // namespace

QtListBox::QtListBox(ListBoxOwner& owner, ListBoxMode mode, const QString& spokenName,
                     QWidget* parent)
    : QListView(parent), m_owner(owner), m_model(new ListBoxModel(this)) {
  setAccessibleName(spokenName);
  setModel(m_model);
  setItemDelegate(new RoomyItems(this));
  setUniformItemSizes(true);
  setVerticalScrollMode(ScrollPerItem);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(mode == ListBoxMode::One ? SingleSelection : ExtendedSelection);
  m_silent = false;
}

QModelIndex QtListBox::IndexOf(int item) const {
  return m_model->index(item, 0);
}

void QtListBox::ResetContent() {
  m_model->Clear();
}

int QtListBox::AddString(const std::string& text, std::uintptr_t itemData) {
  const QScopedValueRollback<bool> silence(m_silent, true);
  return m_model->Add(text, itemData);
}

// Qt would make a neighbour of a removed item the current one, and select it.
void QtListBox::DeleteString(int item) {
  if (!m_model->Items().Has(item)) return;
  const QScopedValueRollback<bool> silence(m_silent, true);
  if (currentIndex().row() == item) selectionModel()->clearCurrentIndex();
  selectionModel()->select(IndexOf(item), QItemSelectionModel::Deselect);
  m_model->Erase(item);
}

int QtListBox::Count() const {
  return m_model->Items().Count();
}

std::string QtListBox::Text(int item) const {
  return m_model->Items().Text(item);
}

std::uintptr_t QtListBox::Data(int item) const {
  return m_model->Items().Data(item);
}

int QtListBox::FindStringExact(const std::string& text) const {
  return m_model->Items().FindExact(text);
}

int QtListBox::CurSel() const {
  const QModelIndex current = currentIndex();
  if (current.isValid() && selectionModel()->isSelected(current)) return current.row();
  const QItemSelection selected = selectionModel()->selection();
  const auto first = std::min_element(
      selected.begin(), selected.end(),
      [](const QItemSelectionRange& a, const QItemSelectionRange& b) { return a.top() < b.top(); });
  return first == selected.end() ? -1 : first->top();
}

void QtListBox::SetCurSel(int item) {
  const QScopedValueRollback<bool> silence(m_silent, true);
  selectionModel()->clear();
  if (const QModelIndex index = IndexOf(item); index.isValid()) {
    setCurrentIndex(index);
    scrollTo(index);
  }
}

void QtListBox::SetSel(int item, bool on) {
  const QScopedValueRollback<bool> silence(m_silent, true);
  selectionModel()->select(IndexOf(item),
                           on ? QItemSelectionModel::Select : QItemSelectionModel::Deselect);
}

// Qt's time for a question about the selection grows with the number of ranges, so neighbours are
// one range.
void QtListBox::SelectOnly(std::vector<int> items) {
  std::erase_if(items, [this](int item) { return !m_model->Items().Has(item); });
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  QItemSelection ranges;
  for (auto first = items.begin(); first != items.end();) {
    auto last = first;
    while (last + 1 != items.end() && *(last + 1) == *last + 1) ++last;
    ranges.select(IndexOf(*first), IndexOf(*last));
    first = last + 1;
  }
  const QScopedValueRollback<bool> silence(m_silent, true);
  selectionModel()->select(ranges, QItemSelectionModel::ClearAndSelect);
}

bool QtListBox::IsSelected(int item) const {
  const QModelIndex index = IndexOf(item);
  return index.isValid() && selectionModel()->isSelected(index);
}

int QtListBox::SelectedCount() const {
  const QItemSelection selected = selectionModel()->selection();
  return std::accumulate(
      selected.begin(), selected.end(), 0,
      [](int count, const QItemSelectionRange& range) { return count + range.height(); });
}

int QtListBox::RowHeight() const {
  return fontMetrics().height() + kRoomPx;
}

// The list scrolls by items.
int QtListBox::TopIndex() const {
  return verticalScrollBar()->value();
}

int QtListBox::CountPerPage() const {
  return std::max(1, viewport()->height() / RowHeight());
}

void QtListBox::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QListView::selectionChanged(selected, deselected);
  if (!m_silent) m_owner.OnListBoxSelection();
}

void QtListBox::SelectForMenu(const QModelIndex& under) {
  if (under.isValid() && !selectionModel()->isSelected(under)) setCurrentIndex(under);
}

void QtListBox::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton)
    SelectForMenu(indexAt(event->pos()));
  else
    QListView::mousePressEvent(event);
}

void QtListBox::mouseDoubleClickEvent(QMouseEvent* event) {
  QListView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid())
    m_owner.OnListBoxDoubleClick();
}

void QtListBox::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter && event->key() != Qt::Key_Delete) return QListView::keyPressEvent(event);
  event->setAccepted(m_owner.OnListBoxKey(enter ? ListBoxKey::Enter : ListBoxKey::Delete));
}

// The menu key has no place of its own: the menu opens at the current item.
void QtListBox::contextMenuEvent(QContextMenuEvent* event) {
  QPoint at = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard)
    at = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  m_owner.OnListBoxContextMenu(at.x(), at.y());
  event->accept();
}
