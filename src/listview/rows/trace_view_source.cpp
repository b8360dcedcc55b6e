// From a row to the source line that issued its trace.
#include "base/text.h"
#include "listview/rows/trace_view.h"
#include "listview/source/open_source.h"

void CTraceView::OnUpdateGotoSource(CCmdUI& ui) {
  const TraceEvent_i* event = CurrentEvent();
  ui.Enable(event && !event->GetSourceFileName(m_document.m_names).empty());
  if (event && !ui.IsEnabled()) ui.SetWhyNot(kNoSourceFile);
}

// Opening may take as long as the user likes: this view may be gone behind it.
void CTraceView::OnGotoSource() {
  if (const TraceEvent_i* event = CurrentEvent())
    OpenSourceAt(_UTF2MBS(event->GetSourceFileName(m_document.m_names)), event->GetSourceLine());
}
