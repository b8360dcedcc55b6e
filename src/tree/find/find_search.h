// Runs a search over the rows of a view without freezing the program.
//
// A view makes a FindWalk over its own store and gives it to RunSearch:
//
//   void Find:      if (!RunFindDialog(host)) return;          // Cancel
//                   const CWaitCursor wait(host);
//                   ... as Find Next
//   void Find Next: MyWalk walk(*this, FindSettings.backward != 0);
//                   const FindResult result = RunSearch(host, &document, walk);
//                   if (result == FindResult::Hit) go to the position of the walk;
//                   if (result == FindResult::NotFound) ReportNotFound(host);
//
// A search is long work (docview/dialogs/long_work.h). A cancelled search is no hit and gets no
// message. Nothing that a walk reads changes meanwhile: the user reaches only the box, and a
// monitor leaves its traces in the queue.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string_view>

#include "docview/document.h"

// One pass over the candidates of a search, in the search's order.
class FindWalk {
 public:
  // Does a part of the preparation for the next candidate. Returns true while some of it is left.
  virtual bool Prepare() { return false; }
  // Moves to the next candidate and returns its text, which is valid until the next call; none when
  // the pass is over. REQUIRES: Prepare has returned false.
  virtual std::optional<std::string_view> NextText() = 0;

 protected:
  ~FindWalk() = default;
};

enum class FindResult { Hit, NotFound, Cancelled };

// Tests the candidates against the pattern prepared last, until one matches. `document` is the
// document that the walk reads, or null if it reads nothing that changes.
FindResult RunSearch(Host& host, CDocument* document, FindWalk& walk);

// "Find"; false when the user cancelled it. After true the pattern is ready, and FindSettings have
// the values of the dialog.
bool RunFindDialog(Host& host);

// "Text not found."
void ReportNotFound(Host& host);
