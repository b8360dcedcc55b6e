#include "controls/listbox/list_box_items.h"

#include <algorithm>
#include <cstring>

#include "base/text.h"

namespace {

bool ComesBefore(const std::string& a, const std::string& b) {
  return std::strcoll(a.c_str(), b.c_str()) < 0;
}

}  // namespace

int ListBoxItems::PlaceOf(const std::string& text) const {
  const auto place = std::upper_bound(
      m_items.begin(), m_items.end(), ToLowerAscii(text),
      [](const std::string& key, const Item& item) { return ComesBefore(key, item.key); });
  return static_cast<int>(place - m_items.begin());
}

void ListBoxItems::Insert(int place, const std::string& text, std::uintptr_t data) {
  m_items.insert(m_items.begin() + place, {text, ToLowerAscii(text), data});
}

void ListBoxItems::Erase(int item) {
  if (Has(item)) m_items.erase(m_items.begin() + item);
}

const std::string& ListBoxItems::Text(int item) const {
  static const std::string none;
  return Has(item) ? m_items[static_cast<std::size_t>(item)].text : none;
}

std::uintptr_t ListBoxItems::Data(int item) const {
  return Has(item) ? m_items[static_cast<std::size_t>(item)].data : 0;
}

int ListBoxItems::FindExact(const std::string& text) const {
  const std::string key = ToLowerAscii(text);
  const auto found = std::find_if(m_items.begin(), m_items.end(),
                                  [&](const Item& item) { return item.key == key; });
  return found == m_items.end() ? -1 : static_cast<int>(found - m_items.begin());
}
