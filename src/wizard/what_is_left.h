// What Finish could not do, in words for the status bar.
#pragma once

#include <string>
#include <vector>

struct LeftMachine {
  std::string machine, why;
};

// "Cannot configure db: no trace service there", or "2 of 3 machines are not wholly configured: db
// (no trace service there), web (cancelled)". REQUIRES: there is one.
std::string WhatIsLeft(const std::vector<LeftMachine>& left, std::size_t machines, bool cancelled);
