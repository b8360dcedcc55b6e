// What became of a page's Submit.
//
// Threads  Interface thread.
#pragma once

#include "config/document/config_doc.h"

enum class SubmitResult { Taken, Refused, Unanswered };

// Submits what the handle holds and tells the document of it.
inline SubmitResult SubmitFor(CConfigDoc& document, const trace_App_i& app) {
  const bool taken = app.Submit();
  document.NoteSubmit(app, taken);
  if (taken) return SubmitResult::Taken;
  return document.IsLive() ? SubmitResult::Refused : SubmitResult::Unanswered;
}
