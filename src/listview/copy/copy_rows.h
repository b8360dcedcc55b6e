// "Copy Rows As": puts traces on the clipboard in a form, and remembers the form.
//
// Errors   A box says why nothing was copied; then the clipboard is as it was, also after a cancel.
// Threads  Interface thread.
#pragma once

#include "documents/trace_doc.h"
#include "listview/copy/copied_traces.h"
#include "listview/copy/copy_form.h"

void CopyRowsAs(CTraceDoc& document, CopiedTraces& traces, CopyForm form);
