// The trace points that are made at run time by name, for quor_named_point.
//
// Shape    A table that grows only, with at most kMost points. Further names share one.
// Owner    The points and their names, in allocated memory that is never given back, because the
//          library and its callers keep their addresses.
// Errors   Names are cut at a NUL and at NameTable::kNameBytesMax bytes. Without memory the shared
//          point is given.
// Threads  Find: any thread, without a lock, so that a forked child finds no lock taken.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

#include "quor/quor.h"

class NamedPoints {
 public:
  static constexpr std::size_t kMost = 4096;

  constexpr NamedPoints() = default;
  quor_point* Find(std::string_view component, std::string_view category);

 private:
  struct Named {
    quor_point point;
    bool Is(std::string_view component, std::string_view category) const {
      return component == point.component && category == point.category;
    }
  };
  static constexpr std::size_t kSlots = 2 * kMost;
  Named* Make(std::string_view component, std::string_view category);

  std::array<std::atomic<Named*>, kSlots> m_slots{};
  std::atomic<std::size_t> m_count{0};
};
