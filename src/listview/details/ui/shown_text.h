// A trace's text as an edit shows it, and where its bytes stand there.
//
// Shape    Lines that end in CR LF, UTF-8. An edit has one character for each line's end, and
//          counts in UTF-16 units.
// Threads  Pure.
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "tree/find/find_hits.h"

class ShownText {
 public:
  explicit ShownText(const std::string& text);

  const QString& Text() const { return m_shown; }
  // The places of `hits`, which stand in their order, in Text().
  std::vector<HitRange> PlacesOf(const std::vector<HitRange>& hits) const;

 private:
  const std::string& m_text;
  QString m_shown;
  std::vector<std::size_t> m_places;  // by UTF-16 unit of m_text
};
