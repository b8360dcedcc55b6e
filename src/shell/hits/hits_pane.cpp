#include "shell/hits/hits_pane.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "listview/cells/cell_text.h"
#include "panes/trace_pane.h"
#include "settings/globals.h"
#include "tree/find/searched_text.h"

namespace {

// Before the first hit, where the text is longer.
constexpr std::size_t kBytesBefore = 40;
constexpr std::string_view kCut = "\u2026 ";
constexpr int kRowChars = 12, kTimeChars = 26, kTextChars = 120;

constexpr std::size_t kLongestCharacter = 4;

// The beginning of a character; in bytes that are no UTF-8 the place itself.
std::size_t CharacterFrom(std::string_view text, std::size_t place) {
  for (std::size_t at = place; at < std::min(place + kLongestCharacter, text.size()); ++at)
    if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80) return at;
  return place;
}

}  // namespace

HitsPane::HitsPane(Host& host, const MakeList& makeList, std::function<void()> focusRows)
    : m_host(host),
      m_focusRows(std::move(focusRows)),
      m_list(makeList(*this)),
      m_go(host, [this] { GoTo(m_wanted); }) {
  MakeColumns();
}

HitsPane::~HitsPane() = default;

void HitsPane::MakeColumns() {
  ListHeader& header = m_list->Header();
  const int charPx = header.AverageCharWidth();
  header.InsertColumn({"Row", ColumnAlign::Right}, kRowChars * charPx);
  header.InsertColumn({"Time"}, kTimeChars * charPx);
  header.InsertColumn({"Trace"}, kTextChars * charPx);
}

void HitsPane::OnPane(TracePane& pane) {
  m_pane = &pane;
  Show(Hits());
}

void HitsPane::OnShown(bool seen) {
  if (!seen) return m_timer.reset();
  if (!m_timer) m_timer.emplace(m_host, kLookMs, [this] { Look(); });
  Look();
}

const HitCount* HitsPane::Hits() const {
  return m_pane ? m_pane->Hits() : nullptr;
}

void HitsPane::Look() {
  const HitCount* const hits = Hits();
  if ((hits ? hits->Version() : 0) != m_version) Show(hits);
}

void HitsPane::Show(const HitCount* hits) {
  m_version = hits ? hits->Version() : 0;
  m_changing = true;
  if (!hits || m_program != hits->Program()) {
    m_list->SetItemCount(0);
    m_program = hits ? std::optional(hits->Program()) : std::nullopt;
    m_hits = hits ? std::make_unique<FindHits>(hits->Program()) : nullptr;
  }
  m_list->SetItemCount(hits ? hits->Count() : 0);
  m_changing = false;
  m_list->Repaint();
}

void HitsPane::GoTo(int hit) {
  if (TraceOf(hit)) Hits()->GoTo(Hits()->RowOf(hit));
}

const TraceEvent_i* HitsPane::TraceOf(int hit) const {
  const HitCount* const hits = Hits();
  const int row = hits && m_hits ? hits->RowOf(hit) : -1;
  return row == -1 ? nullptr : hits->TraceAt(row);
}

// ---- the list

std::string HitsPane::RowListText(int row, ListColumn column) {
  const TraceEvent_i* const trace = TraceOf(row);
  if (!trace) return {};
  switch (column.Index()) {
    case kRow:
      return GroupDigits(static_cast<std::uint64_t>(Hits()->RowOf(row)) + 1);
    case kTime:
      return CellText(Column::Time, *trace, nullptr, m_pane->Document().m_names, g_useUtc);
    default:
      return Around(*trace).text;
  }
}

HitsPane::Part HitsPane::Around(const TraceEvent_i& trace) {
  std::string kept;
  const std::string_view text = SearchedText(trace, kept);
  const auto& found = m_hits->In(text, FindHits::kStepsToPaint);
  const std::size_t first = found.empty() ? 0 : found.front().begin;
  const bool cut = first > kBytesBefore;
  const std::size_t from = cut ? CharacterFrom(text, first - kBytesBefore) : 0;
  const std::size_t before = cut ? kCut.size() : 0;
  Part part;
  part.text = (cut ? std::string(kCut) : std::string()).append(text.substr(from, kCellBytes));
  part.text = CutUtf8(part.text, kCellBytes - 1);
  for (const HitRange& hit : found) {
    const std::size_t begin = hit.begin - from + before;
    if (begin >= part.text.size()) break;
    part.hits.push_back({begin, std::min(hit.end - from + before, part.text.size())});
  }
  return part;
}

std::vector<HitRange> HitsPane::RowListHits(int row, ListColumn column) {
  const TraceEvent_i* const trace = column.Index() == kText ? TraceOf(row) : nullptr;
  return trace ? Around(*trace).hits : std::vector<HitRange>();
}

int HitsPane::RowListIcon(int row) {
  const TraceEvent_i* const trace = TraceOf(row);
  return trace ? SeverityIcon(*trace) : -1;
}

std::string HitsPane::RowListEmptyText() {
  const HitCount* const hits = Hits();
  if (!hits) return "Nothing was searched here\nEdit > Find... finds what is listed";
  return hits->IsWhole() ? "No hits" : "Looking for hits...";
}

// A held arrow key passes many hits in a moment: it is the last one that counts.
void HitsPane::OnRowStateChanged(int row, unsigned, unsigned newState) {
  if (!m_changing && (newState & kRowFocused)) OnRowClicked(row);
}

void HitsPane::OnRowClicked(int row) {
  m_wanted = row;
  m_go.Ask();
}

void HitsPane::OnRowDoubleClicked(int row) {
  GoTo(row);
  m_focusRows();
}

void HitsPane::OnColumnResized(ListColumn column, int widthPx) {
  m_list->Header().SetColumnWidth(column, widthPx);
}
