#include "shell/details/detail_body.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "settings/registry.h"
#include "tree/find/find_hits.h"
#include "where/hits/where_hits.h"

namespace {

constexpr const char* kPrettyName = "Pretty JSON";

std::string PrettyKey() {
  return std::string(kRegTraceView) + "\\Beside";
}

}  // namespace

void DetailBody::Read(std::string text, WhereProgramPtr where) {
  m_text = std::move(text);
  m_where = std::move(where);
  m_pretty = NtRegGet(HKEY_CURRENT_USER, PrettyKey(), kPrettyName, 0U) == 1;
  m_json = PrettyJsonOf(m_text);
  ShowFirst();
}

void DetailBody::SetPretty(bool on) {
  if (on == m_pretty) return;
  m_pretty = on;
  NtRegPut(HKEY_CURRENT_USER, PrettyKey(), kPrettyName, on ? 1U : 0U);
  ShowFirst();
}

void DetailBody::ShowFirst() {
  m_shownBytes = CutUtf8(Whole(), kFirstBytes).size();
  FindHitsIn();
}

void DetailBody::ShowAll() {
  m_shownBytes = Whole().size();
  FindHitsIn();
}

void DetailBody::FindHitsIn() {
  std::string_view traced = std::string_view(m_text).substr(0, m_shownBytes);
  const bool moved = m_pretty && m_json;
  if (moved) {
    const auto hidden = std::ranges::partition_point(
        m_json->moved, [this](const MovedBytes& each) { return each.to < m_shownBytes; });
    const std::size_t end = hidden == m_json->moved.end() ? m_text.size() : hidden->from;
    traced = std::string_view(m_text).substr(0, end);
  }
  FindHits find;
  WhereHits where(m_where);
  m_hits = JoinedHits(find.In(traced), where.In(traced));
  if (!moved) return;
  for (HitRange& hit : m_hits)
    hit = {m_json->PlaceOf(hit.begin), std::min(m_json->EndOf(hit.end), m_shownBytes)};
  // White space that was left out has no place.
  std::erase_if(m_hits, [](const HitRange& hit) { return hit.begin >= hit.end; });
}
