// An imported trace as a text of its fields that are not missing.
#pragma once

#include <cstdio>
#include <string>

#include "import/fields/imported_trace.h"
#include "import/lines/line_format.h"
#include "records/trace_event.h"

inline std::string ShownTime(const ImportedTrace& trace) {
  if (!trace.hasTime) return "no time";
  const auto [year, month, day] = UnpackDate(trace.date);
  const auto [hour, minute, second, ms] = UnpackTime(trace.time);
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u", year, month, day, hour,
                minute, second, ms);
  return text;
}

inline std::string Shown(const ImportedTrace& trace) {
  constexpr const char* kNames[] = {"machine", "app", "component", "category",
                                    "pid",     "tid", "file"};
  std::string shown = ShownTime(trace) + " [" + AttributesToLabel(trace.attributes) + "]";
  for (std::size_t place = 0; place < kImportNames; ++place)
    if (trace.names[place].data())
      shown += std::string(" ") + kNames[place] + "=" + std::string(trace.names[place]);
  if (trace.line != 0) shown += " line=" + std::to_string(trace.line);
  if (trace.count) shown += " count=" + std::to_string(*trace.count);
  if (trace.tic != 0) shown += " tic=" + std::to_string(trace.tic);
  shown += " '" + std::string(trace.text) + "'";
  if (trace.stack.data()) shown += " stack '" + std::string(trace.stack) + "'";
  return shown;
}

inline std::string ReadOf(LineFormat& format, std::string_view line) {
  ImportedTrace trace;
  return format.Read(line, trace) ? Shown(trace) : "not understood";
}
