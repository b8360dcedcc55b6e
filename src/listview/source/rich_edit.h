// The port to the text control of a source window: plain text in lines, a caret, a selection.
//
// Shape    Texts are UTF-8 whose lines are parted by "\n". Characters are counted as the control
//          counts them; an index is only good for SetSel. Lines are counted from 0.
// Owner    The view owns the control; the control borrows its RichEditOwner, which outlives it.
// Errors   None: what does not exist is ignored or -1, as each operation says.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "docview/view.h"

class RichEditOwner {
 public:
  // The text became different from, or again the same as, what SetText or SetModify(false) left.
  virtual void OnEditModified(bool modified) = 0;

 protected:
  ~RichEditOwner() = default;
};

struct RichEditFormat {
  std::string face;  // the system's fixed font where this one is missing; the size is the control's
  int tabCells = 0;  // a tab stop every so many characters
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
  // Not modified afterwards; the caret stands at the start.
  virtual void SetText(const std::string& text) = 0;
  virtual std::string GetText() const = 0;
  virtual void SetModify(bool modified) = 0;
  // The character at which a line begins. Line -1 is the caret's; -1 when there is no such line.
  virtual int LineIndex(int line) const = 0;
  // Selects [from, to) and brings the caret, which is its end, into view. -1, -1 takes the
  // selection away and leaves the caret.
  virtual void SetSel(int from, int to) = 0;
  // Marks the line beside its number, until the caret moves. No line: nothing is marked.
  virtual void MarkLine(int line) = 0;
  virtual bool HasSelection() const = 0;
  virtual std::string GetSelText() const = 0;
  virtual void Copy() = 0;
  // Selects the next hit behind the selection, beginning anew at the text's start; false and no
  // change when there is none.
  virtual bool FindText(const RichEditFind& find) = 0;
};

using RichEditMaker = std::function<std::unique_ptr<RichEdit>(RichEditOwner&)>;
