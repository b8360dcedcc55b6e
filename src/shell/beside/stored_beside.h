// Where the panes beside the rows stand and which of them are open, kept between runs.
//
// Shape    Values below a key of their own beside those of the list. A border has one place for
//          each edge, in device-independent pixels; 0: the user has not moved it.
// Errors   A value that cannot be is read as the first one.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/child_frame_face.h"

BesideEdge StoredBesideEdge();
void StoreBesideEdge(BesideEdge edge);

int StoredBesideExtent(BesideEdge edge);
void StoreBesideExtent(BesideEdge edge, int extentPx);

bool IsBesideOpen(const std::string& pane);
void StoreBesideOpen(const std::string& pane, bool open);
