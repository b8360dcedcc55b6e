// The interface to the tree control: items with a button, a label and a data word of the owner. One
// item may be selected.
//
// Shape    The top level has the parent 0. An item stores no text: the control asks its owner when
//          it needs one, because a thread may have millions of items that nobody looks at.
// Owner    The view owns the control; the control borrows its TreeControlOwner, which outlives it.
// Errors   An item that does not exist (0) is ignored and has no data. A failed insertion returns
//          0.
// Cost     No operation depends on the number of items, except a deletion on those below the item.
// Threads  Interface thread.
//
// The Qt class (controls/tree/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controls/text/cell_parts.h"
#include "controls/tree/tree_item.h"
#include "docview/view.h"

// The owner's data for an item; 0: none.
using TreeItemData = std::uintptr_t;

class TreeControlOwner {
 public:
  // The whole text, of any length.
  virtual std::string TreeItemText(TreeItemData data) = 0;
  // The hits of a search in the text of an item.
  virtual std::vector<HitRange> TreeTextHits(const std::string& text) = 0;
  virtual std::optional<RowMark> TreeItemMark(TreeItemData) { return std::nullopt; }
  // Another item is selected than before, or none, whoever changed it.
  virtual void OnTreeSelectionChanged() = 0;
  // The item will be expanded, whoever asked for it; the owner may insert its children now. False:
  // it stays closed.
  virtual bool OnTreeItemExpanding(TreeItem item) = 0;
  // Left button on the item's label; 0 outside all labels. The item is selected already.
  virtual void OnTreeClicked(TreeItem item) = 0;
  // Left button anywhere except on an expand button, where each press opens or closes; or Enter.
  virtual void OnTreeDoubleClicked() = 0;
  // Right button, before the context menu; 0 outside all labels.
  virtual void OnTreeRightPressed(TreeItem item) = 0;
  virtual void OnTreeContextMenu(int screenXPx, int screenYPx) = 0;

 protected:
  ~TreeControlOwner() = default;
};

enum TreeItemState : unsigned {
  kTreeExpanded = 1,
  kTreeHasChildren = 2,  // shows a button, whether or not it has child items
};

enum class TreeStep {
  Parent,
  FirstChild,  // of 0: the first item of the top level
  LastChild,
  NextSibling,
  PreviousSibling,
  PreviousVisible,  // the row above, on the screen or not; none for an item below a closed one
};

// The part of the interface for the model: inserts and reads items.
class TreeItemPort {
 public:
  // Inserts as the last child. With `hasChildren` the button shows immediately.
  virtual TreeItem InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) = 0;
  // Deletes the item with all items below it; 0: all items. If one of them was selected, the
  // selection moves to the item after the deleted one, else to the one before it, else to its
  // parent.
  virtual void DeleteItem(TreeItem item) = 0;
  virtual TreeItemData ItemData(TreeItem item) const = 0;
  virtual unsigned ItemState(TreeItem item) const = 0;  // TreeItemState bits
  virtual TreeItem Walk(TreeItem from, TreeStep step) const = 0;

 protected:
  ~TreeItemPort() = default;
};

class TreeControl : public ViewControl, public TreeItemPort {
 public:
  // The text of the item has changed.
  virtual void ItemTextChanged(TreeItem item) = 0;
  // Opens or closes, as the user does. If the selection is below an item that is closed, it moves
  // to that item. An item stays closed if it has no children after its owner was asked, or if the
  // owner refuses.
  virtual void Expand(TreeItem item, bool open) = 0;
  virtual TreeItem SelectedItem() const = 0;
  // Opens all items above it; if one of them stays closed, the selection does not change. 0:
  // selects nothing.
  virtual void SelectItem(TreeItem item) = 0;
  // Opens all items above it and scrolls as little as needed; does nothing if one stays closed.
  virtual void EnsureVisible(TreeItem item) = 0;
  // How many rows the item and the visible items below it take, if its parents are expanded.
  virtual std::int64_t RowsOf(TreeItem item) const = 0;
  // Scrolls horizontally, as little as needed, to the first hit in the item's text.
  virtual void ShowHit(TreeItem item) = 0;
  // Does the item's rectangle overlap the control's?
  virtual bool IsOnScreen(TreeItem item) const = 0;
  // While redrawing is off nothing is painted; switching it on paints all.
  virtual void SetRedraw(bool on) = 0;
  // The hits have changed.
  virtual void Repaint() = 0;
};

using TreeControlMaker = std::function<std::unique_ptr<TreeControl>(TreeControlOwner&)>;
