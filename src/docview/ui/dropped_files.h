// The files among what is dragged over a window.
//
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

class QMimeData;

// The local files, in order; empty if there are none.
std::vector<std::string> DroppedFiles(const QMimeData& data);
