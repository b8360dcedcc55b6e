// What is typed at the caret, and what could stand there.
//
// Threads  Pure.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "where/text/where_next.h"

struct WherePlace {
  WhereNext next;        // Nothing: there is nothing to complete
  std::size_t from = 0;  // what is replaced
  std::size_t to = 0;
  std::string typed;      // of it, up to the caret; without quotes and escapes
  bool isQuoted = false;  // it begins with a quote
};

// REQUIRES: caret <= text.size().
WherePlace WherePlaceAt(std::string_view text, std::size_t caret);
