#include "quor/runtime/process/named_points.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "quor/ring/cut_length.h"
#include "quor/runtime/process/name_table.h"
#include "quor/runtime/process/point_table.h"

namespace {

quor_point g_noRoomPoint = QUOR_POINT_INIT("Quor", PointTable::kNoRoomCategory);

// What a C string keeps of it. Never null, because it is copied.
std::string_view CStringOf(std::string_view text) {
  if (text.empty()) return {"", 0};
  text = text.substr(0, CutLength(text.data(), text.size(), NameTable::kNameBytesMax));
  return text.substr(0, text.find('\0'));
}

std::size_t HashOfNames(std::string_view component, std::string_view category) {
  std::uint64_t hash = 14695981039346656037u;
  const auto add = [&hash](std::string_view text) {
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211u;
    hash = (hash ^ 0xFFu) * 1099511628211u;  // no byte of UTF-8: "ab" "c" is not "a" "bc"
  };
  add(component);
  add(category);
  return static_cast<std::size_t>(hash ^ (hash >> 32));
}

}  // namespace

quor_point* NamedPoints::Find(std::string_view component, std::string_view category) {
  component = CStringOf(component);
  category = CStringOf(category);
  const std::size_t hash = HashOfNames(component, category);
  Named* made = nullptr;
  for (std::size_t step = 0;; ++step) {
    std::atomic<Named*>& slot = m_slots[(hash + step) % kSlots];
    Named* found = slot.load(std::memory_order_acquire);
    if (!found) {
      if (!made) made = Make(component, category);
      if (!made) return &g_noRoomPoint;
      if (slot.compare_exchange_strong(found, made, std::memory_order_acq_rel)) return &made->point;
    }
    if (!found->Is(component, category)) continue;
    if (made) {  // another thread was faster
      std::free(made);
      m_count.fetch_sub(1, std::memory_order_relaxed);
    }
    return &found->point;
  }
}

// Half of the slots stay free, so that a search ends.
NamedPoints::Named* NamedPoints::Make(std::string_view component, std::string_view category) {
  if (m_count.fetch_add(1, std::memory_order_relaxed) < kMost) {
    void* const memory = std::malloc(sizeof(Named) + component.size() + category.size() + 2);
    if (memory) {
      char* const names = static_cast<char*>(memory) + sizeof(Named);
      char* const second = names + component.size() + 1;
      std::memcpy(names, component.data(), component.size());
      names[component.size()] = '\0';
      std::memcpy(second, category.data(), category.size());
      second[category.size()] = '\0';
      return new (memory) Named{QUOR_POINT_INIT(names, second)};
    }
  }
  m_count.fetch_sub(1, std::memory_order_relaxed);
  return nullptr;
}
