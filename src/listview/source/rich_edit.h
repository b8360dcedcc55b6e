// The interface to the text control of a source window: plain text in lines, a caret, a selection.
//
// Shape    Texts are UTF-8 with "\n" between lines. Characters are counted in the control's own
//          way; use an index only for SetSel. Lines are counted from 0.
// Owner    The view owns the control; the control borrows its RichEditOwner, which outlives it.
// Errors   None: a line or text that does not exist is ignored or gives -1, see each operation.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "docview/view.h"

class RichEditOwner {
 public:
  // The text became different from, or equal again to, the text at SetText or SetModify(false).
  virtual void OnEditModified(bool modified) = 0;

 protected:
  ~RichEditOwner() = default;
};

struct RichEditFormat {
  std::string face;   // else the system's fixed font; the control has the size
  int tabCells = 0;   // a tab stop every so many characters
  bool wrap = false;  // long lines are broken
};

struct RichEditFind {
  std::string text;
  bool matchCase = false;
  bool wholeWord = false;
};

class RichEdit : public ViewControl {
 public:
  virtual void SetFormat(const RichEditFormat& format) = 0;
  // Afterwards the text is not modified and the caret is at the start.
  virtual void SetText(const std::string& text) = 0;
  virtual std::string GetText() const = 0;
  virtual void SetModify(bool modified) = 0;
  // The character at which a line begins. Line -1 is the caret's; -1 when there is no such line.
  virtual int LineIndex(int line) const = 0;
  // Selects [from, to) and scrolls to the caret, which is at its end. -1, -1 removes the selection
  // and leaves the caret.
  virtual void SetSel(int from, int to) = 0;
  // Marks the line beside its number, until the caret moves. Does nothing without such a line.
  virtual void MarkLine(int line) = 0;
  virtual bool HasSelection() const = 0;
  virtual std::string GetSelText() const = 0;
  virtual void Copy() = 0;
  // Selects the next hit after the selection, and continues at the text's start. Without a hit:
  // false and no change.
  virtual bool FindText(const RichEditFind& find) = 0;
};

using RichEditMaker = std::function<std::unique_ptr<RichEdit>(RichEditOwner&)>;
