#include "tree/filter/ui/filter_face.h"

#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/plain_tool_tip.h"
#include "tree/filter/ui/filter_boxes.h"
#include "tree/filter/ui/filter_model.h"

namespace {

constexpr int kWidthChars = 76, kHeightLines = 38;

}  // namespace

FilterFace::FilterFace(CFilterDialog& dialog, QWidget* parent)
    : QtDialogFace(dialog, parent), m_dialog(dialog), m_model(new FilterModel(dialog, this)) {
  setWindowTitle(CFilterDialog::kCaption);
  setObjectName("filter");
  setSizeGripEnabled(true);
  resize(fontMetrics().averageCharWidth() * kWidthChars,
         fontMetrics().lineSpacing() * kHeightLines);
  auto* layout = new QVBoxLayout(this);
  auto* text = new QLabel(CFilterDialog::kText, this);
  text->setWordWrap(true);
  m_tree = MakeTree();
  text->setBuddy(m_tree);
  layout->addWidget(text);
  layout->addWidget(m_tree, 1);
  QDialogButtonBox* const buttons = MakeDialogButtons(*this, false).box;
  if (m_dialog.m_takeAsText) AddAsText(*buttons);
  layout->addWidget(buttons);
  m_tree->setFocus();
}

// At the left, where a row of buttons has one that resets: it is no answer to the dialog.
void FilterFace::AddAsText(QDialogButtonBox& buttons) {
  QPushButton* const asText =
      AddButton(buttons, CFilterDialog::kIdAsText, "As &Text", QDialogButtonBox::ResetRole);
  SetPlainToolTip(*asText,
                  "Filter by a text that shows the same traces, in the line above the rows");
  connect(asText, &QPushButton::clicked, this, [this] { Forward([&] { m_dialog.OnAsText(); }); });
}

QTreeView* FilterFace::MakeTree() {
  auto* tree = new QTreeView(this);
  NameControl(*tree, CFilterDialog::kTree, "Traces to include");
  tree->setHeaderHidden(true);
  // A long name can be scrolled to; it is not cut.
  tree->header()->setStretchLastSection(false);
  tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  tree->setUniformRowHeights(true);
  tree->setModel(m_model);
  tree->setItemDelegate(
      new FilterBoxes([this](const QModelIndex& index) { OnBoxClicked(index); }, tree));
  connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& current) {
            Forward([&] { m_dialog.OnTreeSelect(FilterModel::NodeOf(current)); });
          });
  tree->setCurrentIndex(m_model->IndexOf(&m_dialog.Tree().Root()));
  tree->viewport()->installEventFilter(this);
  return tree;
}

void FilterFace::OnBoxClicked(const QModelIndex& index) {
  FilterNode* const node = FilterModel::NodeOf(index);
  Forward([&] { m_dialog.OnTreeClick(node, true); });
  m_model->NotifyStates(*node);
  UpdateData();
}

// The tree itself reacts only to a press on a label; a press beside it would clear the selection.
// Handled before the tree, because a press on an expand button may move the rows.
bool FilterFace::eventFilter(QObject* watched, QEvent* event) {
  const bool press =
      event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
  if (!press || static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
    return QtDialogFace::eventFilter(watched, event);
  const QPoint at = static_cast<QMouseEvent*>(event)->pos();
  const QModelIndex row = m_tree->indexAt({m_tree->columnViewportPosition(0), at.y()});
  Forward([&] { m_dialog.OnTreeClick(FilterModel::NodeOf(row), false); });
  UpdateData();
  if (m_tree->indexAt(at).isValid()) return false;
  m_tree->setFocus(Qt::MouseFocusReason);
  return true;
}

void FilterFace::UpdateData() {
  const QModelIndex selected = m_model->IndexOf(m_dialog.Selected());
  if (m_tree->currentIndex() != selected) m_tree->setCurrentIndex(selected);
  m_tree->viewport()->update();
}
