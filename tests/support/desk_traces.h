// Traces of machine desk, application shop, process 100, thread one, in a document.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "documents/trace_doc.h"
#include "support/make_event.h"

inline void NameDesk(CTraceDoc& document) {
  document.m_loading = false;
  document.m_names = {{1, {"desk"}}, {2, {"shop"}}, {3, {"100"}},   {4, {"one"}},
                      {5, {"two"}},  {6, {"lab"}},  {7, {"a.cpp"}}, {8, {"200"}}};
}

// Adds a trace to the document; no view is notified. Its names are those above and its number is
// `next`, unless set otherwise. `next` becomes the number after it.
inline TraceEvent_i* AddDeskTrace(CTraceDoc& document, TraceFields fields, std::uint32_t& next) {
  if (!fields.machine) fields.machine = 1;
  if (!fields.app) fields.app = 2;
  if (!fields.pid) fields.pid = 3;
  if (!fields.tid) fields.tid = 4;
  if (!fields.count) fields.count = next;
  next = *fields.count + 1;
  document.AddTrace(MakeEvent(fields).release());
  return document.m_traces.back();
}
