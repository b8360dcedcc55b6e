#include "listview/details/ui/shown_text.h"

#include <algorithm>

ShownText::ShownText(const std::string& text) : m_text(text) {
  const QString all = QString::fromStdString(text);
  m_shown.reserve(all.size());
  m_places.reserve(static_cast<std::size_t>(all.size()) + 1);
  qsizetype ends = 0;  // where the carriage returns before a line feed, if there are any, begin
  for (qsizetype i = 0; i < all.size(); ++i) {
    if (i >= ends)
      for (ends = i; ends < all.size() && all[ends] == u'\r';) ++ends;
    m_places.push_back(static_cast<std::size_t>(m_shown.size()));
    if (i < ends && ends < all.size() && all[ends] == u'\n') continue;
    m_shown += all[i];
  }
  m_places.push_back(static_cast<std::size_t>(m_shown.size()));
}

std::vector<HitRange> ShownText::PlacesOf(const std::vector<HitRange>& hits) const {
  std::size_t byte = 0, unit = 0;
  const auto placeOf = [&](std::size_t at) {
    const auto bytes = static_cast<qsizetype>(at - byte);
    unit += static_cast<std::size_t>(QString::fromUtf8(m_text.data() + byte, bytes).size());
    byte = at;
    return m_places[std::min(unit, m_places.size() - 1)];
  };
  std::vector<HitRange> places;
  for (const HitRange& hit : hits) {
    const std::size_t begin = placeOf(hit.begin);
    places.push_back({begin, placeOf(hit.end)});
  }
  return places;
}
