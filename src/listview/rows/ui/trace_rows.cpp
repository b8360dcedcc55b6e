#include "listview/rows/ui/trace_rows.h"

#include "listview/rows/ui/severity_icons.h"

std::unique_ptr<QtRowList> MakeTraceRows(RowListOwner& owner) {
  return MakeRows(owner, "Traces");
}

std::unique_ptr<QtRowList> MakeRows(RowListOwner& owner, const std::string& name) {
  return std::make_unique<QtRowList>(owner, std::make_unique<SeverityIcons>(),
                                     QString::fromStdString(name));
}
