// The text of the trace that the details show: as much of it as is shown, the JSON in it on lines
// of its own if the user wants that, and the hits.
//
// Shape    Hits are those of the text as it was traced, wherever their bytes stand now.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json/pretty_json.h"
#include "controls/text/cell_parts.h"
#include "where/where_program.h"

class DetailBody {
 public:
  // A longer text is shown in part, until the user asks for all of it.
  static constexpr std::size_t kFirstBytes = 8192;

  void Read(std::string text, WhereProgramPtr where);
  void Clear() { Read({}, nullptr); }

  bool HasJson() const { return m_json.has_value(); }
  // As the settings have it, for the texts with JSON to come too.
  bool IsPretty() const { return m_pretty; }
  void SetPretty(bool on);
  void ShowAll();

  std::string_view Shown() const { return Whole().substr(0, m_shownBytes); }
  std::size_t HiddenBytes() const { return Whole().size() - m_shownBytes; }
  const std::vector<HitRange>& Hits() const { return m_hits; }

 private:
  std::string_view Whole() const { return m_pretty && m_json ? m_json->text : m_text; }
  void ShowFirst();
  void FindHitsIn();

  std::string m_text;
  std::optional<PrettyJson> m_json;
  bool m_pretty = false;
  std::size_t m_shownBytes = 0;
  WhereProgramPtr m_where;
  std::vector<HitRange> m_hits;
};
