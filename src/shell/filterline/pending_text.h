// A filter text that is being applied, and what is there again if it is stopped.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>

#include "shell/filterline/filter_steps.h"

struct PendingText {
  FilterSteps steps;                     // with the text that was in force
  std::optional<std::string> text = {};  // of the line; none: what the user typed stays
  WhereProgramPtr program = nullptr;     // that is being applied
};
