#include "notes/kept/doc_notes.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/fail_with.h"
#include "base/text.h"
#include "records/trace_event.h"

DocNotes::DocNotes(Host& host, const TraceList_t& traces, std::function<void()> changed)
    : m_host(host), m_traces(traces), m_changed(std::move(changed)) {}

// ---- the file

void DocNotes::Open(const std::string& tracePath, std::shared_ptr<const MappedFile> file) {
  m_path = tracePath;
  m_file = std::move(file);
  Read();
}

void DocNotes::Read() {
  m_reads = Changes() + 1;
  m_unreadable.clear();
  m_notes.Load(m_path, Traces(), &m_unreadable);
}

void DocNotes::ReadIfOutdated() {
  if (!m_file || m_notes.IsModified() || !m_notes.IsOutdated()) return;
  Read();
  m_changed();
}

void DocNotes::Close() {
  m_timer.reset();
  if (IsUnsaved()) Save(false, nullptr);
  m_reads = Changes() + 1;
  // In place: filters have the table.
  m_notes.Notes().Clear();
  if (m_file) m_notes = FileNotes();
  m_file.reset();
  m_unreadable.clear();
  m_saveAfterMs = kSaveAfterMs;
  m_told = false;
}

// The notes file stands beside what has the name now, with the prints of what is mapped here: both
// must be one file. A file that was cut reads as zeros, so its prints would be wrong.
bool DocNotes::MayWrite(std::string* why) const {
  const std::optional<FileMark> now = FileMark::At(m_path);
  if (!now) return FailOn(why, m_path);
  if (!now->IsSameFile(m_file->Mark()))
    return FailWith(why, m_path + ": another file has this name now, and gets no notes");
  const FileChange change = m_file->Change();
  if (!change.Any()) return true;
  return FailWith(why, m_path + ": " + FileChangeText(change) + ", and it gets no notes");
}

bool DocNotes::Save(bool replace, std::string* why) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begun = Clock::now();
  if (!MayWrite(why) || !m_notes.Save(Traces(), replace, why)) return false;
  const auto took =
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun).count();
  m_saveAfterMs = std::max(kSaveAfterMs, static_cast<unsigned>(took) * kRest);
  m_told = false;
  return true;
}

void DocNotes::OnChanged() {
  if (m_file && !m_timer) m_timer.emplace(m_host, m_saveAfterMs, [this] { SaveLate(); });
  m_changed();
}

void DocNotes::SaveLate() {
  m_timer.reset();
  std::string why;
  if (!IsUnsaved() || Save(false, &why) || std::exchange(m_told, true)) return;
  m_host.PostBox({"The marks and notes are not saved.\n\n" + why +
                      "\n\nThey stay in this window. It asks about them when it is closed.",
                  BoxIcon::Warning, BoxButtons::Ok},
                 [] {});
}

bool DocNotes::MayClose() {
  std::string why;
  if (!IsUnsaved() || Save(false, &why)) return true;
  const bool replaceable = !m_notes.IsUnreadable() && MayWrite(nullptr) &&
                           (m_notes.IsOfAnother() || m_notes.IsOutdated());
  return replaceable ? AskToReplace(why) : AskToLose(why);
}

bool DocNotes::AskToReplace(const std::string& why) {
  MessageBoxRequest question;
  question.text = why + ".\n\nReplace it by the marks and notes of this window?";
  question.buttons = BoxButtons::YesNoCancel;
  question.preferred = BoxAnswer::Cancel;
  const BoxAnswer answer = m_host.MessageBox(question);
  if (answer == BoxAnswer::Cancel) return false;
  std::string reason;
  if (answer == BoxAnswer::Yes && !Save(true, &reason)) return AskToLose(reason);
  m_givenUp = Stand();
  return true;
}

bool DocNotes::AskToLose(const std::string& why) {
  MessageBoxRequest question;
  question.text =
      "The marks and notes cannot be saved.\n\n" + why + "\n\nClose the window without them?";
  question.buttons = BoxButtons::YesNo;
  question.preferred = BoxAnswer::No;
  if (m_host.MessageBox(question) != BoxAnswer::Yes) return false;
  m_givenUp = Stand();
  return true;
}

// ---- the traces

TraceEvent_i* DocNotes::TraceAt(std::uint64_t number) const {
  const std::uint64_t first = m_traces.Popped();
  if (number < first || number - first >= m_traces.size()) return nullptr;
  return m_traces[static_cast<std::size_t>(number - first)];
}

bool DocNotes::MayHold(std::size_t more) {
  if (more + Notes().size() <= kMost) return true;
  m_host.MessageBox({"At most " + GroupDigits(kMost) + " traces have marks or notes.",
                     BoxIcon::Warning, BoxButtons::Ok});
  return false;
}

bool DocNotes::Mark(const std::vector<std::uint64_t>& numbers, std::uint8_t colour) {
  ReadIfOutdated();
  if (colour != 0 && !MayHold(numbers.size())) return false;
  for (const std::uint64_t number : numbers) {
    const TraceEvent_i* const trace = TraceAt(number);
    if (trace && trace->Record()) m_notes.Notes().Mark(number, trace->Record(), colour);
  }
  OnChanged();
  return true;
}

bool DocNotes::SetNote(std::uint64_t number, const std::string& note) {
  ReadIfOutdated();
  const TraceEvent_i* const trace = TraceAt(number);
  if (!trace || !trace->Record() || (!note.empty() && !MayHold(1))) return false;
  m_notes.Notes().SetNote(number, trace->Record(), note);
  OnChanged();
  return true;
}

void DocNotes::Remove(const std::vector<std::uint64_t>& numbers) {
  for (const std::uint64_t number : numbers) {
    const TraceEvent_i* const trace = TraceAt(number);
    if (trace && trace->Record()) m_notes.Notes().Set(number, trace->Record(), 0, {});
  }
  OnChanged();
}

void DocNotes::RemoveOthers(const std::vector<std::size_t>& places) {
  m_notes.ForgetOthers(places);
  OnChanged();
}

std::shared_ptr<const WhereMarks> DocNotes::ForFilters(std::string* why) {
  // Only the interface thread walks over traces that come and go.
  if (!m_file) return Notes().Live();
  ReadIfOutdated();
  if (m_notes.IsUnreadable())
    return FailWith(why, m_unreadable, std::shared_ptr<const WhereMarks>());
  if (m_notes.IsOfAnother() && Notes().empty())
    return FailWith(why, NotesPath(m_path) + ": of another trace file, not applied",
                    std::shared_ptr<const WhereMarks>());
  return m_notes.Notes().Shared();
}
