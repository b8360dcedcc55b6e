#include "wizard/what_is_left.h"

#include "base/text.h"

std::string WhatIsLeft(const std::vector<LeftMachine>& left, std::size_t machines, bool cancelled) {
  if (left.size() == 1 && !cancelled)
    return "Cannot configure " + left[0].machine + ": " + left[0].why;
  std::string text = GroupDigits(left.size()) + " of " + GroupDigits(machines) +
                     (machines == 1 ? " machine" : " machines") +
                     (left.size() == 1 ? " is" : " are") + " not wholly configured: ";
  for (const LeftMachine& each : left)
    text += (&each == left.data() ? "" : ", ") + each.machine + " (" + each.why + ")";
  return text;
}
