#include "overview/sliced_reader.h"

#include <algorithm>

LossNames::LossNames(const NameMap& names) {
  for (const auto& [id, entry] : names) {
    if (entry.name == "Quor") m_components.push_back(id);
    if (entry.name == "Loss") m_categories.push_back(id);
  }
}

bool LossNames::Contains(const std::vector<NameId>& ids, NameId id) {
  return std::binary_search(ids.begin(), ids.end(), id);
}
