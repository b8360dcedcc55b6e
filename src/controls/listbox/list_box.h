// The interface to the list box: lines of text, each with a number that belongs to its owner.
//
// Shape    Items are sorted as people sort names: by the locale, ignoring case; of equal ones the
//          first added comes first. They are 0..count-1, and -1 means none.
// Owner    The window owns the list box, which borrows its ListBoxOwner. The owner outlives it.
// Errors   An item that does not exist is ignored; it has no text, and its data are 0.
// Threads  Interface thread.
//
// The Qt class (controls/listbox/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "docview/view.h"

enum class ListBoxMode {
  One,     // the current item is the selected one
  Several  // the user extends the selection by Shift and Ctrl
};

// Keys that the owner gets before the list box.
enum class ListBoxKey { Delete, Enter };

class ListBoxOwner {
 public:
  // The user has changed the selection. Calls of the list box's own operations are not reported.
  virtual void OnListBoxSelection() = 0;
  virtual void OnListBoxDoubleClick() = 0;  // on an item
  // False: the key goes to the window (Enter, say, presses its default button).
  virtual bool OnListBoxKey(ListBoxKey key) = 0;
  // A right click selects the item under it first; beside all items it selects nothing.
  virtual void OnListBoxContextMenu(int screenXPx, int screenYPx) = 0;

 protected:
  ~ListBoxOwner() = default;
};

class ListBox : public ViewControl {
 public:
  // While redrawing is off nothing is painted; switching it on paints all.
  virtual void SetRedraw(bool on) = 0;
  virtual void ResetContent() = 0;  // removes all items
  // Returns the new item. What is selected stays selected.
  virtual int AddString(const std::string& text, std::uintptr_t data = 0) = 0;
  virtual void DeleteString(int item) = 0;
  virtual int Count() const = 0;
  virtual std::string Text(int item) const = 0;
  virtual std::uintptr_t Data(int item) const = 0;
  // The first item with this text in any case.
  virtual int FindStringExact(const std::string& text) const = 0;

  // The selected item; of several the one that the user selected last, if it is still selected.
  virtual int CurSel() const = 0;
  // Selects this item alone and scrolls it into view; -1 selects none.
  virtual void SetCurSel(int item) = 0;
  // Selects or deselects this item and leaves the others. REQUIRES: ListBoxMode::Several.
  virtual void SetSel(int item, bool on) = 0;
  // Selects these items and no others. For many it is quicker than one at a time. REQUIRES:
  // ListBoxMode::Several.
  virtual void SelectOnly(std::vector<int> items) = 0;
  virtual bool IsSelected(int item) const = 0;
  virtual int SelectedCount() const = 0;

  virtual int TopIndex() const = 0;
  virtual int CountPerPage() const = 0;  // fully visible items; 1 if there is not even one
};
