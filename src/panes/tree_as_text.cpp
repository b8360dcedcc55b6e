#include "panes/tree_as_text.h"

#include "documents/trace_doc.h"
#include "tree/filter/filter_dialog.h"
#include "tree/filter/text/filter_text.h"

FilterNames FilterNamesOf(const CTraceDoc& document) {
  return {document.m_names, document.IsStream()};
}

int RunFilterDialog(CTraceDoc& document, CTraceFilter& filter, std::string* asText) {
  CFilterDialog dialog(document.GetHost(), filter, document.m_names);
  if (asText)
    dialog.m_takeAsText = [&](const CTraceFilter& chosen, std::string* why) {
      const auto text = TextOfFilter(chosen, FilterNamesOf(document), why);
      if (text) *asText = *text;
      return text.has_value();
    };
  return dialog.DoModal();
}
