// The row list of a trace view on the screen: the control with the signs of the severities.
//
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "controls/list/ui/row_list_widget.h"

std::unique_ptr<QtRowList> MakeTraceRows(RowListOwner& owner);
// The same with another name for assistive technology.
std::unique_ptr<QtRowList> MakeRows(RowListOwner& owner, const std::string& name);
