// What a user last searched for: one set for the whole program, shared by all views. Lives in
// memory only.
//
// Threads  Interface thread.
#pragma once

#include <string>

struct FindSettings_t {
  std::string searchText;  // as the user typed it
  int ignoreCase = 0;
  int backward = 0;
  int regularExpression = 0;
  int wordSearch = 0;
};

extern FindSettings_t FindSettings;

// When Find Next is enabled, beside a view's own rule (it shows something).
inline bool MayFindNext() {
  return !FindSettings.searchText.empty();
}
