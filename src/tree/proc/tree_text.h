// The text form of a tree, as the export writes it: a line for each item, "|   " for each level
// above it, then "+- " before an item that is closed over others and "|- " before any other.
//
// Errors   A write that fails ends the export; ExportFile::Close tells.
// Threads  One at a time.
#pragma once

#include <limits>

#include "listview/export/export_file.h"
#include "tree/proc/proc_model.h"
#include "tree/proc/tree_control.h"

// False when nothing more can be written.
bool WriteTreeLine(ExportFile& file, int depth, bool closed, const std::string& text);

// The lines of a control's item and of those that are seen below it.
void WriteTreeText(ExportFile& file, const TreeControl& tree, TreeItem item,
                   TreeControlOwner& texts);

// The lines of a node and of those below it, with the first `levels` levels open: what the control
// would give.
constexpr int kAllLevels = std::numeric_limits<int>::max();
void WriteNodeText(ExportFile& file, const ProcModel& model, const CTraceEvent& top,
                   int levels = kAllLevels);
