#include "panes/document_names.h"

#include "documents/trace_doc.h"
#include "records/process_name.h"

namespace {

const IdList* IdsOf(const TraceIndexes& seen, WhereField field) {
  switch (field) {
    case WhereField::Machine:
      return &seen.machines;
    case WhereField::Application:
      return &seen.applications;
    case WhereField::Component:
      return &seen.components;
    case WhereField::Category:
      return &seen.categories;
    case WhereField::Pid:
    case WhereField::Account:
      return &seen.processIds;
    case WhereField::Tid:
      return &seen.threadIds;
    case WhereField::File:
      return &seen.sourceFiles;
    default:
      return nullptr;
  }
}

}  // namespace

std::vector<std::string> DocumentNames(const CTraceDoc& document, WhereField field) {
  std::vector<std::string> names;
  const IdList* const ids = IdsOf(document.m_indexes, field);
  if (!ids) return names;
  for (const NameId id : ids->Ids()) {
    std::string name = NameOf(document.m_names, id);
    if (field == WhereField::Pid) name = std::string(ProcessName::Of(name).process);
    if (field == WhereField::Account) name = std::string(ProcessName::Of(name).account);
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}
