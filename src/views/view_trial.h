// While a view is being applied it is on trial in its file. Somebody who finds it so, and no longer
// finds the program that applied it, knows that this did not come to the end: the view may have
// been the reason.
//
// Shape    Only the mark in the file changes. What another program has kept meanwhile stays.
// Errors   Without a view, or where nothing can be written, nothing happens.
// Threads  Interface thread.
#pragma once

#include <string>

#include "views/view_text.h"

void BeginViewTrial(const std::string& source);
// Unless it is on trial by another program.
void EndViewTrial(const std::string& source);
bool HasFailedTrial(const StoredView& view);
