// The window of the filter dialog.
//
// Every control's object name is its id in decimal.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "tree/filter/filter_dialog.h"

class FilterModel;
class QDialogButtonBox;
class QModelIndex;
class QTreeView;

class FilterFace final : public QtDialogFace {
 public:
  FilterFace(CFilterDialog& dialog, QWidget* parent);

  void UpdateData() override;
  // A press in the tree selects the node of its row, anywhere in the row; below the rows, none.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void AddAsText(QDialogButtonBox& buttons);
  QTreeView* MakeTree();
  void OnBoxClicked(const QModelIndex& index);

  CFilterDialog& m_dialog;
  FilterModel* m_model;
  QTreeView* m_tree;
};
