#include "statistics/stat_rows.h"

#include <unordered_map>

namespace {

void Finish(StatRow& row, const Tally& all) {
  if (all.count > 0)
    row.share = static_cast<double>(row.tally.count) / static_cast<double>(all.count);
  row.rate = RatePerSecond(row.tally);
}

// < 0, 0, > 0.
template <class Value>
int Compare(const Value& a, const Value& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

int CompareBy(StatColumn column, const StatRow& a, const StatRow& b) {
  switch (column) {
    case StatColumn::Value:
      return Compare(a.value, b.value);
    case StatColumn::Count:
    case StatColumn::Share:
      return Compare(a.tally.count, b.tally.count);
    case StatColumn::Rate:
      return Compare(a.rate.value_or(0), b.rate.value_or(0));
    case StatColumn::First:
      return Compare(a.tally.first, b.tally.first);
    case StatColumn::Last:
      return Compare(a.tally.last, b.tally.last);
  }
  return 0;
}

}  // namespace

std::vector<StatRow> StatRowsOf(StatField field, const StatTable& table, const NameMap& names) {
  std::vector<StatRow> rows;
  std::unordered_map<std::string, std::size_t> known;
  for (std::uint32_t number = 0; number < table.Size(); ++number) {
    const Tally& tally = table.TallyAt(number);
    if (tally.count == 0) continue;
    const std::string_view key = table.KeyAt(number);
    const auto [place, isNew] = known.try_emplace(IdentityOf(field, key, names), rows.size());
    if (isNew) rows.push_back({ShownValue(field, key, names), {}, 0, {}, std::string(key), false});
    rows[place->second].tally.Join(tally);
  }
  if (table.Others().count > 0) rows.push_back({"(others)", table.Others(), 0, {}, {}, true});
  for (StatRow& row : rows) Finish(row, table.All());
  return rows;
}

void SortStatRows(std::vector<StatRow>& rows, StatColumn column, bool descending) {
  std::stable_sort(rows.begin(), rows.end(), [&](const StatRow& a, const StatRow& b) {
    if (a.isOthers != b.isOthers) return b.isOthers;
    if (column == StatColumn::Rate && a.rate.has_value() != b.rate.has_value())
      return a.rate.has_value();
    const int order = CompareBy(column, a, b);
    return descending ? order > 0 : order < 0;
  });
}

bool IsFirstDescending(StatColumn column) {
  return column == StatColumn::Count || column == StatColumn::Share || column == StatColumn::Rate;
}
