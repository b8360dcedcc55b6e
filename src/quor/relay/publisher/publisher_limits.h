// How much a publisher sends ahead of the answers, and how long it waits for what.
#pragma once

#include <chrono>
#include <cstddef>

struct PublisherLimits {
  std::size_t messages = 64, bytes = 4u << 20;  // under way
  std::chrono::milliseconds answer{3000};       // that one may take
  std::chrono::milliseconds pause{100}, longestPause{2000};
  std::chrono::milliseconds nameless{1000};  // how long a loss waits for the name of its source
  std::chrono::milliseconds word{1000};      // between words
};
