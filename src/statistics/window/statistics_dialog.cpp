#include "statistics/window/statistics_dialog.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "base/text.h"
#include "panes/trace_pane.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "statistics/stat_texts.h"
#include "statistics/window/pane_count.h"

namespace {

constexpr std::chrono::milliseconds kStep(4);
constexpr int kRowsShare = 50;  // of the time, the making of rows
struct Heading {
  const char* text;
  ReportAlign align;
  const char* longest;  // of its cells; the first column takes what is left
};
constexpr Heading kHeadings[kStatColumns] = {
    {"Value", ReportAlign::Left, "a.component.of.a.few.words"},
    {"Count", ReportAlign::Right, "99,999,999"},
    {"Share", ReportAlign::Right, "100.0 %"},
    {"Per Second", ReportAlign::Right, "9999999.99"},
    {"First", ReportAlign::Left, "0000-00-00 00:00:00.000"},
    {"Last", ReportAlign::Left, "0000-00-00 00:00:00.000"}};
// What it begins with the next time.
constexpr const char *kStoredField = "Field", *kStoredSort = "Sort",
                     *kStoredDescending = "Descending";
constexpr const char* kNoText = "No filter text can say this value.";

std::string Key() {
  return std::string(kRegTraceView) + "\\Statistics";
}

void Store(const char* name, unsigned value) {
  NtRegPut(HKEY_CURRENT_USER, Key(), name, value);
}

// One of a few; otherwise `usual`.
template <class Choice>
Choice Stored(const char* name, std::size_t choices, Choice usual) {
  const unsigned value = NtRegGet(HKEY_CURRENT_USER, Key(), name, static_cast<unsigned>(usual));
  return value < choices ? static_cast<Choice>(value) : usual;
}

}  // namespace

CStatisticsDlg::CStatisticsDlg(Host& host, std::function<TracePane*()> shown,
                               std::function<void(const std::string&)> take)
    : CDialog(host),
      m_shown(std::move(shown)),
      m_take(std::move(take)),
      m_field(Stored(kStoredField, kStatFields, StatField::Component)),
      m_sort(Stored(kStoredSort, kStatColumns, StatColumn::Count)),
      m_descending(NtRegGet(HKEY_CURRENT_USER, Key(), kStoredDescending, 1U) != 0),
      m_timer(host.SetTimer(kTickMs, [this] { OnTick(); })),
      m_face(host.ShowModeless(*this)) {
  OnTick();
}

CStatisticsDlg::~CStatisticsDlg() {
  GetHost().KillTimer(m_timer);
}

void CStatisticsDlg::Attach(StatisticsControls& controls) {
  m_controls = &controls;
  for (const Heading& heading : kHeadings)
    controls.List().InsertColumn(heading.text, heading.align);
  ShowRows(std::move(m_rows));
  ShowStatus();
}

const char* CStatisticsDlg::HeadingOf(StatField field) {
  constexpr const char* kHeadings[kStatFields] = {"Component", "Category", "Application",
                                                  "Thread",    "Severity", "Text Pattern"};
  return kHeadings[static_cast<std::size_t>(field)];
}

void CStatisticsDlg::SetField(StatField field) {
  if (field == m_field) return;
  m_field = field;
  Store(kStoredField, static_cast<unsigned>(field));
  BeginAnew();
  OnTick();
}

void CStatisticsDlg::BeginAnew() {
  m_count = nullptr;
  m_refusal.clear();
  m_traces = 0;
  ShowRows({});
}

void CStatisticsDlg::OnTick() {
  if (Ended()) return;
  TracePane* const pane = m_shown();
  if (!pane || pane->Document().m_loading) {
    if (m_count) BeginAnew();
    return ShowStatus();
  }
  if (!m_count || !m_count->IsOf(pane->Document(), pane->m_filter, m_field)) {
    // The earlier rows stay until there are new ones.
    m_count = std::make_unique<PaneCount>(pane->Document(), pane->m_filter, m_field);
    m_changed = true;
    m_nextRows = {};
  }
  m_changed = m_count->Step(kStep) || m_changed;
  const Clock::time_point begun = Clock::now();
  if (m_changed && begun >= m_nextRows) {
    MakeRows();
    m_nextRows = begun + (Clock::now() - begun) * kRowsShare;
  }
  ShowStatus();
}

void CStatisticsDlg::MakeRows() {
  m_changed = false;
  ShowRows(NewRows());
}

// Sorted, or in the places that they have.
std::vector<StatRow> CStatisticsDlg::NewRows() {
  const NameMap& names = m_shown()->Document().m_names;
  const StatTable& table = m_count->Table();
  m_traces = table.All().count;
  std::vector<StatRow> rows = StatRowsOf(m_field, table, names);
  SortStatRows(rows, m_sort, m_descending);
  if (!m_controls || !m_controls->List().HasSelection()) return rows;
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = 0; i < m_rows.size(); ++i) places.emplace(m_rows[i].key, i);
  const auto placeOf = [&](const StatRow& row) {
    const auto place = places.find(row.key);
    return place == places.end() ? places.size() : place->second;
  };
  std::stable_sort(rows.begin(), rows.end(),
                   [&](const StatRow& a, const StatRow& b) { return placeOf(a) < placeOf(b); });
  return rows;
}

void CStatisticsDlg::ShowRows(std::vector<StatRow> rows) {
  const bool same = rows.size() == m_rows.size();
  m_rows = std::move(rows);
  if (!m_controls) return;
  ReportList& list = m_controls->List();
  if (same && list.ItemCount() == static_cast<int>(m_rows.size()))
    list.Repaint();
  else
    list.SetItemCount(static_cast<int>(m_rows.size()));
  list.ShowSort(static_cast<int>(m_sort), m_descending);
  OnReportSelection();
}

// ---- the list

std::string CStatisticsDlg::ReportText(int row, int column) {
  if (row < 0 || static_cast<std::size_t>(row) >= m_rows.size()) return {};
  return StatText(m_rows[static_cast<std::size_t>(row)], static_cast<StatColumn>(column), g_useUtc);
}

std::string CStatisticsDlg::ReportEmptyText() {
  return "No traces";
}

std::vector<int> CStatisticsDlg::ReportWidths(int roomPx) {
  std::vector<int> widths;
  if (!m_controls) return widths;
  const ReportList& list = m_controls->List();
  for (const Heading& heading : kHeadings)
    widths.push_back(std::max(list.WidthFor(heading.text), list.WidthFor(heading.longest)));
  const int othersPx = std::accumulate(widths.begin() + 1, widths.end(), 0);
  widths[0] = std::max(widths[0], roomPx - othersPx);
  return widths;
}

void CStatisticsDlg::OnReportSelection() {
  if (m_controls) m_controls->EnableOnlyThis(m_controls->List().SelectedRows().size() == 1);
}

void CStatisticsDlg::OnReportHeading(int column) {
  if (column < 0 || column >= static_cast<int>(kStatColumns)) return;
  const auto wanted = static_cast<StatColumn>(column);
  m_descending = wanted == m_sort ? !m_descending : IsFirstDescending(wanted);
  m_sort = wanted;
  Store(kStoredSort, static_cast<unsigned>(m_sort));
  Store(kStoredDescending, m_descending ? 1 : 0);
  SortStatRows(m_rows, m_sort, m_descending);
  if (!m_controls) return;
  // Nothing stays selected: the rows are others now.
  m_controls->List().SetItemCount(static_cast<int>(m_rows.size()));
  m_controls->List().ShowSort(column, m_descending);
}

void CStatisticsDlg::OnOK() {
  if (!m_controls || !m_shown()) return;
  const std::vector<int> selected = m_controls->List().SelectedRows();
  if (selected.size() != 1 || static_cast<std::size_t>(selected[0]) >= m_rows.size()) return;
  const StatRow row = m_rows[static_cast<std::size_t>(selected[0])];
  const auto text =
      row.isOthers ? std::nullopt : OnlyThisValue(m_field, row.key, m_shown()->Document().m_names);
  m_refusal = text ? "" : kNoText;
  if (text) m_take(*text);
  ShowStatus();
}

void CStatisticsDlg::ShowStatus() {
  if (!m_controls) return;
  if (!m_refusal.empty()) return m_controls->ShowStatus(m_refusal);
  if (!m_count) return m_controls->ShowStatus("");
  if (m_count->HasFailed()) return m_controls->ShowStatus("There is not enough memory to count.");
  std::string text = GroupDigits(m_traces) + (m_traces == 1 ? " trace, " : " traces, ") +
                     GroupDigits(m_rows.size()) + (m_rows.size() == 1 ? " value" : " values");
  if (!m_count->IsWhole())
    text += ", counting " + std::to_string(m_count->Thousandths() / 10) + " %";
  m_controls->ShowStatus(text);
}
