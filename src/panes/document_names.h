// The names that a document has for a field of the filter text.
//
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

#include "where/text/where_fields.h"

class CTraceDoc;

// In any order; none for a field without names. A process is without its account.
std::vector<std::string> DocumentNames(const CTraceDoc& document, WhereField field);
