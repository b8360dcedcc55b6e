// Candidates of a search that returns the same text as long as the test wants.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tree/find/find_search.h"

class EndlessTexts final : public FindWalk {
 public:
  std::optional<std::string_view> NextText() override {
    if (left == 0) return std::nullopt;
    if (left > 0) --left;
    return text;
  }
  int left = -1;  // remaining texts; below 0: without end
  std::string text = "nothing here";
};
