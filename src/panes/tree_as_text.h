// The filter dialog in a window whose line of filter text can take the dialog's tree.
//
// Threads  Interface thread.
#pragma once

#include <string>

#include "tree/filter/text/filter_names.h"
#include "tree/filter/trace_filter.h"

// A frame with such a line.
class TreeTextTaker {
 public:
  // Filters by this text in place of the tree: all marks are shown then.
  virtual void TakeTreeText(const std::string& text) = 0;

 protected:
  ~TreeTextTaker() = default;
};

// The names of a document. More may come where traces arrive.
FilterNames FilterNamesOf(const CTraceDoc& document);

// Runs the dialog on the filter, which has the names of the document. `asText` null: it offers no
// text. Returns kIdOk, kIdCancel, or CFilterDialog::kIdAsText with the text of the tree.
int RunFilterDialog(CTraceDoc& document, CTraceFilter& filter, std::string* asText);
