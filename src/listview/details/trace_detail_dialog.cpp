#include "listview/details/trace_detail_dialog.h"

#include <algorithm>
#include <utility>

#include "listview/details/detail_texts.h"

namespace {

std::string WithCarriageReturns(const std::string& text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n') lines += '\r';
    lines += c;
  }
  return lines;
}

}  // namespace

const std::vector<CTraceDetailDialog::Field>& CTraceDetailDialog::Fields() {
  using D = CTraceDetailDialog;
  static const std::vector<Field> fields = {
      {1159, "Trace Info", "Severity:", &D::m_severity},
      {1041, "Trace Info", "Count:", &D::m_count},
      {1158, "Trace Info", "Attributes:", &D::m_attributes},
      {1054, "Trace Info", "Component:", &D::m_component},
      {1055, "Trace Info", "Category:", &D::m_category},
      {1044, "Process Info", "Machine:", &D::m_machine},
      {1045, "Process Info", "Application:", &D::m_application},
      {1046, "Process Info", "PID:", &D::m_pid},
      {1047, "Process Info", "TID:", &D::m_tid},
      {1042, "Time Info", "Time:", &D::m_time},
      {1072, "Time Info", "Tic Count:", &D::m_ticCount},
      {1078, "Time Info", "Tic Difference:", &D::m_ticDifference},
      {kSource, "Location", "Source:", &D::m_source},
  };
  return fields;
}

const CTraceDetailDialog::Field& CTraceDetailDialog::AccountField() {
  static constexpr Field field = {kAccount, "Process Info",
                                  "Account:", &CTraceDetailDialog::m_account};
  return field;
}

CTraceDetailDialog::CTraceDetailDialog(Host& host, CTraceIterator& iterator, const NameMap& names)
    : CDialog(host), m_iterator(iterator), m_nameMap(names), m_namer(host) {}

CTraceDetailDialog::~CTraceDetailDialog() = default;

void CTraceDetailDialog::OnInitDialog() {
  m_gotoPath.clear();
  CDialog::OnInitDialog();
  Fill();
}

void CTraceDetailDialog::OnNext() {
  m_iterator.Next();
  if (!m_iterator.cancelled) Fill();
}

void CTraceDetailDialog::OnBack() {
  m_iterator.Prev();
  if (!m_iterator.cancelled) Fill();
}

bool CTraceDetailDialog::HasSource(std::size_t line) const {
  return line < m_stackNames.frames.size() && !m_stackNames.frames[line].file.empty();
}

bool CTraceDetailDialog::OnGotoFrame(std::size_t line) {
  if (!HasSource(line)) return false;
  m_gotoPath = m_stackNames.frames[line].file;
  m_gotoLine = m_stackNames.frames[line].line;
  OnCancel();
  return true;
}

void CTraceDetailDialog::Fill() {
  for (const Field& field : Fields()) (this->*field.value).clear();
  m_account.clear();
  FillText({});
  FillStack({});
  if (const TraceEvent_i* event = m_iterator.current) FillFields(*event);
  m_hasNext = m_iterator.HasNext();
  m_hasBack = m_iterator.HasPrev();
}

void CTraceDetailDialog::FillFields(const TraceEvent_i& event) {
  DetailTexts texts = DetailTextsOf(event, m_nameMap);
  m_severity = std::move(texts.severity);
  m_count = std::move(texts.count);
  m_attributes = std::move(texts.attributes);
  m_component = std::move(texts.component);
  m_category = std::move(texts.category);
  m_machine = std::move(texts.machine);
  m_application = std::move(texts.application);
  m_pid = std::move(texts.pid);
  m_tid = std::move(texts.tid);
  m_account = std::move(texts.account);
  m_time = std::move(texts.time);
  m_source = std::move(texts.source);
  m_ticCount = std::move(texts.ticCount);
  FillText(event.GetText());
  FillStack(event.GetStack());
  m_ticDifference = TicDifference(event.GetTicCount());
}

// The hits refer to the text as it was traced: each line end before a hit moves it by a byte.
void CTraceDetailDialog::FillText(const std::string& text) {
  m_text = WithCarriageReturns(text);
  m_hits = m_findHits.In(text);
  std::size_t at = 0, lines = 0;
  const auto moved = [&](std::size_t place) {
    lines += static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(at),
                                                 text.begin() + static_cast<std::ptrdiff_t>(place),
                                                 '\n'));
    at = place;
    return place + lines;
  };
  for (HitRange& hit : m_hits) {
    hit.begin = moved(hit.begin);
    hit.end = moved(hit.end);
  }
}

// Kept: two real steps of the cursor, which move a list's selection away and back; synchronised
// views follow them. Unlike in a list's column, the two traces may be of different processes.
std::string CTraceDetailDialog::TicDifference(std::uint64_t ticCount) {
  if (ticCount == 0 || !m_iterator.HasPrev()) return TicDifferenceText(ticCount, nullptr);
  m_iterator.Prev();
  if (m_iterator.cancelled) return TicDifferenceText(ticCount, nullptr);
  const std::string text = TicDifferenceText(ticCount, m_iterator.current);
  m_iterator.Next();
  return text;
}

void CTraceDetailDialog::FillStack(const std::string& stack) {
  m_stack = StackLines(stack);
  m_stackEnabled = !stack.empty();
  m_stackNames = {};
  m_namer.Ask(stack, [this](const StackNames& names) {
    m_stackNames = names;
    if (m_whenNamed) m_whenNamed();
  });
}
