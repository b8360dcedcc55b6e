// A trace's text in the form of an edit control, and the mapping of byte positions to that form.
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
  // The positions in Text() of `hits`, which must be in order.
  std::vector<HitRange> PlacesOf(const std::vector<HitRange>& hits) const;

 private:
  const std::string& m_text;
  QString m_shown;
  std::vector<std::size_t> m_places;  // by UTF-16 unit of m_text
};
