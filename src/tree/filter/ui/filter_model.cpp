#include "tree/filter/ui/filter_model.h"

#include "docview/ui/plain_tool_tip.h"

namespace {

struct StateTexts {
  FilterState state;
  Qt::CheckState checkState;
  const char* spoken;
};
constexpr StateTexts kStates[] = {
    {FilterState::Unchecked, Qt::Unchecked, "not checked"},
    {FilterState::Partial, Qt::PartiallyChecked, "partly checked"},
    {FilterState::Checked, Qt::Checked, "checked"},
};

const StateTexts& TextsOf(const FilterNode& node) {
  const StateTexts* texts = kStates;
  while (texts->state != node.State()) ++texts;
  return *texts;
}

}  // namespace

FilterNode* FilterModel::NodeOf(const QModelIndex& index) {
  return index.isValid() ? static_cast<FilterNode*>(index.internalPointer()) : nullptr;
}

QModelIndex FilterModel::IndexOf(FilterNode* node) const {
  return node ? createIndex(static_cast<int>(node->Place()), 0, node) : QModelIndex();
}

void FilterModel::NotifyStates(FilterNode& clicked) {
  for (FilterNode* node = &clicked; node; node = node->Parent())
    emit dataChanged(IndexOf(node), IndexOf(node), {Qt::CheckStateRole});
}

QModelIndex FilterModel::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) return {};
  FilterNode* const above = NodeOf(parent);
  return IndexOf(above ? &above->Child(static_cast<std::size_t>(row)) : &m_dialog.Tree().Root());
}

QModelIndex FilterModel::parent(const QModelIndex& child) const {
  FilterNode* const node = NodeOf(child);
  return IndexOf(node ? node->Parent() : nullptr);
}

int FilterModel::rowCount(const QModelIndex& parent) const {
  const FilterNode* const node = NodeOf(parent);
  return node ? static_cast<int>(node->ChildCount()) : 1;
}

int FilterModel::columnCount(const QModelIndex&) const {
  return 1;
}

QVariant FilterModel::data(const QModelIndex& index, int role) const {
  const FilterNode* const node = NodeOf(index);
  if (!node) return {};
  switch (role) {
    case Qt::DisplayRole:
      return QString::fromStdString(node->Label());
    case Qt::ToolTipRole:
      return PlainToolTip(QString::fromStdString(node->Label()));
    case Qt::CheckStateRole:
      return TextsOf(*node).checkState;
    case Qt::AccessibleDescriptionRole:
      return QString::fromLatin1(TextsOf(*node).spoken);
    default:
      return {};
  }
}

Qt::ItemFlags FilterModel::flags(const QModelIndex& index) const {
  return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable
                         : Qt::NoItemFlags;
}
