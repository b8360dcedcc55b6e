// Running a search over what a view shows, so that it never freezes the program.
//
// A view makes a FindWalk over its own store and gives it to RunSearch:
//
//   void Find:      if (!RunFindDialog(host)) return;          // Cancel
//                   const CWaitCursor wait(host);
//                   ... as Find Next
//   void Find Next: MyWalk walk(*this, FindSettings.backward != 0);
//                   const FindResult result = RunSearch(host, &document, walk);
//                   if (result == FindResult::Hit) go to where the walk stands;
//                   if (result == FindResult::NotFound) TellNotFound(host);
//
// A search is long work (docview/long_work.h). Cancelled is no hit and gets no message. Nothing
// that a walk walks over changes meanwhile: the user reaches only the box, and a monitor leaves its
// traces in the queue.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string_view>

#include "docview/document.h"

// One pass over the candidates of a search, in its order.
class FindWalk {
 public:
  // Does a part of what has to be there before the next candidate; true while something is left of
  // it.
  virtual bool Prepare() { return false; }
  // Goes on to the next candidate and gives its text, which stays good until the next call; nothing
  // when the pass is over. REQUIRES: Prepare has nothing left to do.
  virtual std::optional<std::string_view> NextText() = 0;

 protected:
  ~FindWalk() = default;
};

enum class FindResult { Hit, NotFound, Cancelled };

// Tests the candidates against the pattern prepared last, until one matches. `document` is what the
// walk reads, null for nothing that changes.
FindResult RunSearch(Host& host, CDocument* document, FindWalk& walk);

// "Find"; false when the user cancelled it. After true the pattern is ready, and FindSettings hold
// what was chosen.
bool RunFindDialog(Host& host);

// "Text not found."
void TellNotFound(Host& host);
