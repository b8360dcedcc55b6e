// The port to the tree control: items with a button, a label and a word of the owner's, of which
// one is selected.
//
// Shape    The top level has the parent 0. An item keeps no text: the control asks its owner
//          whenever it needs one, because a thread may have millions of items that nobody looks at.
// Owner    The view owns the control; the control borrows its TreeControlOwner, which outlives it.
// Errors   An item that does not exist (0) is ignored and has nothing. An insertion that fails
//          gives 0.
// Cost     No operation depends on how many items there are, but for those below a deleted one.
// Threads  Interface thread.
//
// A Qt face (controls/tree/ui) and a fake (tests/support) pass one contract test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "controls/text/cell_parts.h"
#include "controls/tree/tree_item.h"
#include "docview/view.h"

// The owner's word for an item; 0: none.
using TreeItemData = std::uintptr_t;

class TreeControlOwner {
 public:
  // The whole text, of any length.
  virtual std::string TreeItemText(TreeItemData data) = 0;
  // What a search has found in the text of an item.
  virtual std::vector<HitRange> TreeTextHits(const std::string& text) = 0;
  // Another item is selected than before, or none, whoever did it.
  virtual void OnTreeSelectionChanged() = 0;
  // The item is about to be expanded, whoever asked for it, and may be given its children now.
  // False: it stays closed.
  virtual bool OnTreeItemExpanding(TreeItem item) = 0;
  // Left button on the item's label, 0 beside all labels. It is selected already.
  virtual void OnTreeClicked(TreeItem item) = 0;
  // Left button anywhere but on an expand button, where each press opens or closes; or Enter.
  virtual void OnTreeDoubleClicked() = 0;
  // Right button, before the context menu; 0 beside all labels.
  virtual void OnTreeRightPressed(TreeItem item) = 0;
  virtual void OnTreeContextMenu(int screenXPx, int screenYPx) = 0;

 protected:
  ~TreeControlOwner() = default;
};

enum TreeItemState : unsigned {
  kTreeExpanded = 1,
  kTreeHasChildren = 2,  // shows a button, whether or not it has been filled
};

enum class TreeStep {
  Parent,
  FirstChild,  // of 0: the first item of the top level
  LastChild,
  NextSibling,
  PreviousSibling,
  PreviousVisible,  // the row above, on the screen or not; none for an item in a closed one
};

// The items: what the logic puts in and reads.
class TreeItemPort {
 public:
  // As the last child. With `hasChildren` the button shows at once.
  virtual TreeItem InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) = 0;
  // With all items below it; 0: all there are. A selection among them goes to the item that follows
  // the deleted one, else to the one before it, else to its parent.
  virtual void DeleteItem(TreeItem item) = 0;
  virtual TreeItemData ItemData(TreeItem item) const = 0;
  virtual unsigned ItemState(TreeItem item) const = 0;  // TreeItemState bits
  virtual TreeItem Walk(TreeItem from, TreeStep step) const = 0;

 protected:
  ~TreeItemPort() = default;
};

class TreeControl : public ViewControl, public TreeItemPort {
 public:
  // The owner would answer another text from now on.
  virtual void ItemTextChanged(TreeItem item) = 0;
  // Opens or closes, as the user does. Nothing below a closed item is seen, and a selection there
  // goes to the item. An item that still has no children when its owner has been asked stays
  // closed, and so does one that the owner does not let open.
  virtual void Expand(TreeItem item, bool open) = 0;
  virtual TreeItem SelectedItem() const = 0;
  // Opens all items above it; when one of them stays closed, nothing is selected anew. 0: none is
  // selected.
  virtual void SelectItem(TreeItem item) = 0;
  // Opens all items above it and scrolls as little as needed; not when one of them stays closed.
  virtual void EnsureVisible(TreeItem item) = 0;
  // How many rows the item and what is seen below it take, if its parents are expanded.
  virtual std::int64_t RowsOf(TreeItem item) const = 0;
  // Scrolls across, as little as needed, to the first hit that the owner tells of in the item's
  // text.
  virtual void ShowHit(TreeItem item) = 0;
  // Does the item's rectangle overlap the control's?
  virtual bool IsOnScreen(TreeItem item) const = 0;
  // While redrawing is off nothing is painted; switching it on paints all.
  virtual void SetRedraw(bool on) = 0;
  // The owner would answer other hits from now on.
  virtual void Repaint() = 0;
};
