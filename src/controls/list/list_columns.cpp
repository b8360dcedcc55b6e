#include "controls/list/list_columns.h"

ListOrder PermutationOf(const ListOrder& order, int columns) {
  ListOrder permutation;
  std::vector<bool> placed(static_cast<std::size_t>(columns));
  const auto place = [&](std::int32_t index) {
    if (index < 0 || index >= columns || placed[static_cast<std::size_t>(index)]) return;
    placed[static_cast<std::size_t>(index)] = true;
    permutation.push_back(index);
  };
  for (const std::int32_t index : order) place(index);
  for (std::int32_t index = 0; index < columns; ++index) place(index);
  return permutation;
}
