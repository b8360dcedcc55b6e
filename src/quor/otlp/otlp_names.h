// The names that the records of one process have.
//
// Shape    A process has room for kNamesMax different ones. A further one is kOther, and stands in
//          the text of its record as " component=NAME", so that it is not lost.
// Owner    Owns the names: the views stay valid as long as this does.
// Threads  One.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "quor/otlp/otlp_mapper.h"

class OtlpNames {
 public:
  enum Field { Component, Category, Thread, File, kFields };
  static constexpr std::size_t kNamesMax = 1024;
  static constexpr std::string_view kOther = "...";

  explicit OtlpNames(OtlpCounts& counts) : m_counts(counts) {}

  // The name without NUL and not longer than a name may be.
  std::string_view Keep(Field field, std::string_view name, std::string& more);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  OtlpCounts& m_counts;
  std::unordered_set<std::string, Hash, std::equal_to<>> m_names;
  std::string_view m_last[kFields];
};

// Replaces each NUL by U+2400, because it would end the text for every reader.
void ReplaceNuls(std::string& text, OtlpCounts& counts);
