// The text form of a tree, as the export writes it: a line for each item, "|   " for each level
// above it, then "+- " before an item that is closed over others and "|- " before any other.
//
// Threads  One at a time.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "tree/proc/proc_model.h"
#include "tree/proc/tree_control.h"

// Appends a line, without its end.
void AppendTreeLine(std::string& out, int depth, bool closed, std::string_view text);

// Takes a line; false ends the visit.
using TreeLineTaker = std::function<bool(int depth, bool closed, const std::string& text)>;

// The lines of a control's item and of those that are seen below it.
void VisitTree(const TreeControl& tree, TreeItem item, TreeControlOwner& texts,
               const TreeLineTaker& take);

// The lines that a control would give for a node if the first `levels` levels were open.
constexpr int kAllLevels = std::numeric_limits<int>::max();
void VisitNodes(const ProcModel& model, const CTraceEvent& top, int levels,
                const TreeLineTaker& take);
