// The colour rules of one list: those of all lists, or its own until the user chooses for all.
//
// Threads  Interface thread.
#pragma once

#include <optional>

#include "listview/colours/active_colours.h"
#include "views/view_state.h"

class ListColours {
 public:
  // What the list paints by; null: its rows are plain.
  const ColourProgramPtr& Shown() const;
  ViewColours State() const;
  void SetState(const ViewColours& colours);
  bool AreOwn() const;
  void DropOwn() { m_own.reset(); }

 private:
  std::optional<ColourProgramPtr> m_own;
  unsigned m_choices = 0;  // when it got them
};
