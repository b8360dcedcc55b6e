// A table of applications as text, a line for each: "orders* open Net/Close=0 Net/Open=7". The star
// stands behind a selected one, "open" for a handle.
#pragma once

#include <string>

#include "wizard/tables/wizard_tables.h"

inline std::string TableText(const WizApps& apps) {
  std::string text;
  for (const auto& [name, app] : apps) {
    text += name + (app.m_bSelected ? "*" : "") + (app.m_app ? " open" : "");
    for (const auto& [key, trace] : app.m_traces)
      text += " " + key.first + "/" + key.second + "=" +
              (trace.m_nSettings == WizTrace::kNotRead ? "?" : std::to_string(trace.m_nSettings));
    text += "\n";
  }
  return text;
}
