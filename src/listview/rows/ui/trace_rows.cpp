#include "listview/rows/ui/trace_rows.h"

#include "listview/rows/ui/severity_icons.h"

std::unique_ptr<QtRowList> MakeTraceRows(RowListOwner& owner) {
  return std::make_unique<QtRowList>(owner, std::make_unique<SeverityIcons>(), "Traces");
}
