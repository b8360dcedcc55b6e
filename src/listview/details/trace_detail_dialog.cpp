#include "listview/details/trace_detail_dialog.h"

#include <algorithm>

#include "base/quor_ptr.h"
#include "records/process_name.h"
#include "records/timer.h"
#include "settings/globals.h"

namespace {

constexpr char kNotAvailable[] = "n/a";

// Kept: a list's export writes "Warn" for the second.
std::string SeverityWord(int attributes) {
  const int severity = attributes & kSeverityMask;
  switch (severity) {
    case kAttributeInfo:
      return "Info";
    case kAttributeWarn:
      return "Warning";
    case kAttributeError:
      return "Error";
    default:
      return QuorStr::NumToStr(severity);
  }
}

std::string WithCarriageReturns(const std::string& text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n') lines += '\r';
    lines += c;
  }
  return lines;
}

std::string SourceOf(const TraceEvent_i& event, const NameMap& names) {
  const std::string file = event.GetSourceFileName(names);
  return file.empty() ? file : file + ":" + QuorStr::NumToStr(event.GetSourceLine());
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
    : CDialog(host), m_iterator(iterator), m_nameMap(names) {}

CTraceDetailDialog::~CTraceDetailDialog() {
  if (m_question) m_question->Withdraw();
}

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
  const int attributes = event.GetAttributes();
  const std::uint32_t count = event.GetSequenceNumber();
  m_severity = SeverityWord(attributes);
  m_count = count == kNoSequenceNumber ? std::string() : QuorStr::NumToStr(count);
  m_attributes = AttributesToLabel(attributes);
  m_component = event.GetComponentName(m_nameMap);
  m_category = event.GetCategoryName(m_nameMap);
  m_machine = event.GetMachineName(m_nameMap);
  m_application = event.GetAppName(m_nameMap);
  m_pid = event.GetPidName(m_nameMap);
  m_tid = event.GetTidName(m_nameMap);
  m_account = ProcessName::Of(m_pid).account;
  m_time = event.GetTimeString(!g_useUtc);
  m_source = SourceOf(event, m_nameMap);
  FillText(event.GetText());
  FillStack(event.GetStack());
  const std::uint64_t ticCount = event.GetTicCount();
  m_ticCount = QuorStr::NumToStr(ticCount);  // kept: 0 reads "0" here
  m_ticDifference = TicDifference(ticCount);
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
// views follow them. Unlike in a list's column, the two traces may be of different processes. A
// difference below 0 wraps.
std::string CTraceDetailDialog::TicDifference(std::uint64_t ticCount) {
  if (ticCount == 0 || !m_iterator.HasPrev()) return kNotAvailable;
  m_iterator.Prev();
  if (m_iterator.cancelled) return kNotAvailable;
  const TraceEvent_i* const earlier = m_iterator.current;
  const std::uint64_t difference = earlier ? ticCount - earlier->GetTicCount() : 0;
  m_iterator.Next();
  if (!earlier) return kNotAvailable;
  const QuorPtr<trc_Timer_i> timer(CreateTimer());
  timer->SetPicoseconds(static_cast<double>(static_cast<std::int64_t>(difference)));
  return QuorStr::NumToStr(difference) + " (" + timer->Format() + ")";
}

void CTraceDetailDialog::FillStack(const std::string& stack) {
  m_stack.clear();
  m_stackEnabled = !stack.empty();
  std::size_t begin = 0;
  for (std::size_t end; (end = stack.find('\n', begin)) != std::string::npos; begin = end + 1)
    m_stack.push_back(stack.substr(begin, end - begin));
  if (begin < stack.size()) m_stack.push_back(stack.substr(begin));
  AskForNames(stack);
}

// The answer comes on another thread, which may hold the question longer than this dialog lives. So
// it is taken only while the mark of the shown stack is there.
void CTraceDetailDialog::AskForNames(const std::string& stack) {
  if (m_question) m_question->Withdraw();
  m_question.reset();
  m_stackMark.reset();
  m_stackNames = {};
  if (stack.empty() || !g_stackNaming) return;
  m_stackMark = std::make_shared<char>();
  const std::weak_ptr<char> mark = m_stackMark;
  m_question = std::make_shared<StackQuestion>(stack, [this, mark](const StackNames& names) {
    GetHost().Post([this, mark, names] {
      if (mark.expired()) return;
      m_stackNames = names;
      if (m_whenNamed) m_whenNamed();
    });
  });
  g_stackNaming->Ask(m_question);
}
