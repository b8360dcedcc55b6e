#include "shell/marks/marks_pane.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "listview/cells/cell_text.h"
#include "notes/mark_colours.h"
#include "panes/row_mark.h"
#include "settings/globals.h"
#include "tree/filter/filter_pass.h"

namespace {

constexpr unsigned kFocusAndSelection = kRowFocused | kRowSelected;

struct Heading {
  const char* text;
  ColumnAlign align;
  int chars;
};
constexpr Heading kHeadings[] = {{"Mark", ColumnAlign::Left, 9},
                                 {"Index", ColumnAlign::Right, 10},
                                 {"Time", ColumnAlign::Left, 22},
                                 {"Note", ColumnAlign::Left, 40},
                                 {"Trace", ColumnAlign::Left, 60}};

std::string MarkText(std::uint8_t colour) {
  return colour == 0 ? "" : std::to_string(colour) + " " + kMarkNames[colour];
}

std::string FirstLine(std::string_view text) {
  return std::string(CutUtf8(text.substr(0, text.find('\n')), kCellBytes - 1));
}

}  // namespace

MarksPane::MarksPane(Host& host, const RowListMaker& makeList, Say say)
    : m_host(host),
      m_list(makeList(*this)),
      m_say(std::move(say)),
      m_step(host, [this] { Look(); }) {
  ListHeader& header = m_list->Header();
  for (const Heading& heading : kHeadings)
    header.InsertColumn({heading.text, heading.align, false},
                        header.AverageCharWidth() * heading.chars);
}

void MarksPane::OnPane(TracePane& pane) {
  m_pane = &pane;
  Look();
}

void MarksPane::OnShown(bool seen) {
  m_seen = seen;
  Look();
}

// ---- the rows

void MarksPane::Look() {
  if (!m_pane || !m_seen) return;
  if (m_of != &Notes() || m_changes != Notes().Changes()) MakeRows();
  m_list->Repaint();
}

// The row that has the focus keeps it, or the one that came to its place does.
void MarksPane::MakeRows() {
  const int focused = m_list->NextItem(-1, kRowFocused);
  const std::optional<std::uint64_t> number = NumberAt(focused);
  m_of = &Notes();
  m_changes = Notes().Changes();
  m_numbers.clear();
  m_numbers.reserve(Notes().Notes().size());
  for (const auto& [each, record] : Notes().Notes().Records()) m_numbers.push_back(each);
  const int rows = static_cast<int>(m_numbers.size() + Notes().Others().size());
  m_list->SetRedraw(false);
  m_list->SetItemState(-1, 0, kFocusAndSelection);
  m_list->SetItemCount(rows);
  int next = focused;
  if (number)
    next = static_cast<int>(std::ranges::lower_bound(m_numbers, *number) - m_numbers.begin());
  if (next != -1 && rows > 0)
    m_list->SetItemState(std::min(next, rows - 1), kFocusAndSelection, kFocusAndSelection);
  m_list->SetRedraw(true);
}

std::optional<std::uint64_t> MarksPane::NumberAt(int row) const {
  if (row < 0 || static_cast<std::size_t>(row) >= m_numbers.size()) return std::nullopt;
  return m_numbers[static_cast<std::size_t>(row)];
}

const FileNotes::Kept* MarksPane::OtherAt(int row) const {
  if (!m_pane || row < 0) return nullptr;
  const std::size_t place = static_cast<std::size_t>(row) - m_numbers.size();
  return place < Notes().Others().size() ? &Notes().Others()[place] : nullptr;
}

std::string MarksPane::RowListText(int row, ListColumn column) {
  if (const std::optional<std::uint64_t> number = NumberAt(row))
    return TraceText(*number, column.As<Column>());
  const FileNotes::Kept* const other = OtherAt(row);
  return other ? OtherText(*other, column.As<Column>()) : std::string();
}

std::string MarksPane::TraceText(std::uint64_t number, Column column) const {
  const TraceEvent_i* const trace = Notes().TraceAt(number);
  if (!trace) return {};
  const NameMap& names = m_pane->Document().m_names;
  switch (column) {
    case kMark:
      return MarkText(Notes().Of(*trace).colour);
    case kIndex:
      return std::to_string(number);
    case kTime:
      return CellText(::Column::Time, *trace, nullptr, names, g_useUtc);
    case kNote:
      return FirstLine(Notes().Of(*trace).note);
    default:
      return std::string(
          CutUtf8(CellText(::Column::Trace, *trace, nullptr, names, g_useUtc), kCellBytes - 1));
  }
}

std::string MarksPane::OtherText(const FileNotes::Kept& other, Column column) const {
  switch (column) {
    case kMark:
      return MarkText(other.row.colour);
    case kIndex:
      return std::to_string(other.row.row);
    case kNote:
      return FirstLine(other.row.note);
    case kTrace:
      if (other.place == NotePlace::Beyond) return "(beyond the end of the file)";
      return Notes().IsOfAnother() ? "(stale: of another trace file)"
                                   : "(stale: another trace is there)";
    default:
      return {};
  }
}

RowTint MarksPane::RowListTint(int row) {
  return NumberAt(row) ? RowTint::None : RowTint::Warn;
}

std::optional<RowMark> MarksPane::RowListMark(int row) {
  if (const std::optional<std::uint64_t> number = NumberAt(row)) {
    const TraceEvent_i* const trace = Notes().TraceAt(*number);
    return trace ? RowMarkOf(m_pane->Document(), *trace) : std::nullopt;
  }
  const FileNotes::Kept* const other = OtherAt(row);
  if (!other) return std::nullopt;
  return RowMarkOf(WhereMark{other->row.colour, other->row.note});
}

std::string MarksPane::RowListEmptyText() {
  if (m_pane && !Notes().WhyUnreadable().empty())
    return "The notes cannot be read\n" + Notes().WhyUnreadable();
  return "No marks or notes\nCtrl+D marks the selected traces, Ctrl+Shift+D writes a note";
}

// ---- the user

void MarksPane::OnRowDoubleClicked(int row) {
  const std::optional<std::uint64_t> number = NumberAt(row);
  if (!number || !m_pane->FinishFilter()) return;
  m_pane->ShowNumber(*number);
  const TraceEvent_i* const trace = Notes().TraceAt(*number);
  m_say(!trace                            ? "The trace has gone"
        : m_pane->CurrentEvent() == trace ? ""
                                          : "The filter hides this trace");
}

bool MarksPane::MayRemove(const RowRanges& rows) const {
  std::size_t notes = 0;
  for (RowRanges::Row row = rows.FirstFrom(0); row != -1; row = rows.FirstFrom(row + 1)) {
    const std::optional<std::uint64_t> number = NumberAt(static_cast<int>(row));
    const TraceEvent_i* const trace = number ? Notes().TraceAt(*number) : nullptr;
    const FileNotes::Kept* const other = OtherAt(static_cast<int>(row));
    notes += (trace && !Notes().Of(*trace).note.empty()) || (other && !other->row.note.empty());
  }
  if (notes == 0) return true;
  const std::string what =
      notes == 1 ? "Remove the note?" : "Remove " + GroupDigits(notes) + " notes?";
  return m_host.MessageBox({what, BoxIcon::Question, BoxButtons::YesNo}) == BoxAnswer::Yes;
}

// The rows are those of before the question: numbers and places are read at once behind it.
bool MarksPane::OnRowListDelete() {
  if (!m_pane) return true;
  const RowRanges rows = m_list->Selection();
  const std::uint64_t changes = m_changes;
  if (rows.Count() == 0 || changes != Notes().Changes() || !MayRemove(rows)) return true;
  if (changes != Notes().Changes()) return true;
  std::vector<std::uint64_t> numbers;
  std::vector<std::size_t> others;
  for (RowRanges::Row row = rows.FirstFrom(0); row != -1; row = rows.FirstFrom(row + 1)) {
    if (const std::optional<std::uint64_t> number = NumberAt(static_cast<int>(row)))
      numbers.push_back(*number);
    else
      others.push_back(static_cast<std::size_t>(row) - m_numbers.size());
  }
  DocNotes& notes = m_pane->Document().Notes();
  if (!others.empty()) notes.RemoveOthers(others);
  if (!numbers.empty()) notes.Remove(numbers);
  return true;
}
