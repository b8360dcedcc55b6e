// What the environment of an application gave it for its start: see StartValues in quor/runtime.
//
// Owner    Values.
// Threads  One.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "quor/link/link.h"

// A point of one instance.
struct TracedPoint {
  std::uint32_t point;
  std::string component, category;
  std::optional<std::uint32_t> start;  // settings that the environment gave
};

using TracedPoints = std::vector<TracedPoint>;

// Of one instance, as far as nobody has set anything else.
struct InstanceStart {
  std::vector<std::string> notes;
  std::optional<LinkSink> sink;
  std::vector<std::optional<std::uint32_t>> settings;  // by point
};

// Of all instances of an application. Settings and sink only if all have the same.
struct AppStart {
  static constexpr std::size_t kNotesMax = 64;
  struct Note {
    std::uint32_t pid;
    std::string text;
  };
  std::vector<Note> notes;
  std::map<std::uint32_t, std::uint32_t> settings;  // by trace id
  std::optional<LinkSink> sink;
};
