// The user's last search: one set of values for the whole program, shared by all views. Kept in
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

// Whether Find Next is enabled, besides a view's own rule (that it shows something).
inline bool MayFindNext() {
  return !FindSettings.searchText.empty();
}
