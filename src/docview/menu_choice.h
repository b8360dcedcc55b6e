// One line of a pop-up menu that a host shows (Host::OpenMenu).
#pragma once

#include <optional>
#include <string>

struct MenuChoice {
  std::string text;  // "&" before its access key, "&&" for an ampersand; empty: a separator
  bool enabled = true;
  std::optional<bool> ticked = {};  // none: it has no box
};
