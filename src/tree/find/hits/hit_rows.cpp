#include "tree/find/hits/hit_rows.h"

#include "base/text.h"

std::string HitText(const FindHitRows& hits, int row) {
  const int count = hits.Count();
  const char* const end = hits.IsWhole() ? "" : " so far";
  if (count == 0) return std::string("no hits") + end;
  std::string text;
  if (row >= 0 && hits.Has(row))
    text = GroupDigits(static_cast<std::uint64_t>(hits.Position(row)) + 1) + " of ";
  text += GroupDigits(static_cast<std::uint64_t>(count)) + (count == 1 ? " hit" : " hits");
  return text + end;
}
