// The items of a list box, in their order.
//
// Errors   As those of the list box.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class ListBoxItems {
 public:
  // Where a new item belongs.
  int PlaceOf(const std::string& text) const;
  void Insert(int place, const std::string& text, std::uintptr_t data);
  void Erase(int item);
  void Clear() { m_items.clear(); }

  int Count() const { return static_cast<int>(m_items.size()); }
  bool Has(int item) const { return item >= 0 && item < Count(); }
  const std::string& Text(int item) const;
  std::uintptr_t Data(int item) const;
  int FindExact(const std::string& text) const;

 private:
  struct Item {
    std::string text;
    std::string key;  // by which it is sorted
    std::uintptr_t data;
  };
  std::vector<Item> m_items;
};
