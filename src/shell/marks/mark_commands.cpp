#include "shell/marks/mark_commands.h"

#include <algorithm>

#include "base/text.h"
#include "docview/commands/command_ids.h"
#include "notes/mark_colours.h"
#include "panes/trace_pane.h"
#include "settings/registry.h"
#include "shell/marks/note_dialog.h"
#include "tree/filter/filter_pass.h"

namespace {

constexpr char kLastColour[] = "Mark Colour";

class ShownMarks {
 public:
  explicit ShownMarks(TracePane& pane)
      : m_notes(pane.Document().Notes()), m_pass(pane.m_filter, pane.Document()) {}

  // The next one that the pane shows; `around`: behind the last one the first was looked at.
  std::optional<std::uint64_t> From(std::optional<std::uint64_t> number, bool forward,
                                    bool& around) {
    const auto& all = m_notes.Notes().Records();
    auto next = forward ? all.begin() : all.end();
    if (number) next = forward ? all.upper_bound(*number) : all.lower_bound(*number);
    for (std::size_t left = all.size(); left > 0; --left) {
      if (next == (forward ? all.end() : all.begin())) {
        around = true;
        next = forward ? all.begin() : all.end();
      }
      const auto one = forward ? next++ : --next;
      if (IsShown(one->first)) return one->first;
    }
    return std::nullopt;
  }

 private:
  bool IsShown(std::uint64_t number) {
    const TraceEvent_i* const trace = m_notes.TraceAt(number);
    if (!trace) return false;
    if (!m_pass.NeedsBefore()) return m_pass.Matches(*trace);
    return m_pass.MatchesBehind(*trace, number > 0 ? m_notes.TraceAt(number - 1) : nullptr);
  }

  const DocNotes& m_notes;
  FilterPass m_pass;
};

}  // namespace

std::uint8_t MarkCommands::LastColour() {
  const unsigned stored = NtRegGet(HKEY_CURRENT_USER, kRegSettings, kLastColour, 1U);
  return static_cast<std::uint8_t>(std::clamp<unsigned>(stored, 1, kMarkColours));
}

void MarkCommands::MapWith(const Map& map) {
  const auto withTrace = [this](CCmdUI& ui) {
    const TracePane* const pane = m_shown();
    ui.Enable(pane && pane->CurrentEvent() != nullptr);
  };
  const auto withMarks = [this](CCmdUI& ui) {
    TracePane* const pane = m_shown();
    ui.Enable(pane && !pane->Document().Notes().Notes().empty());
    if (!ui.IsEnabled()) ui.SetWhyNot("No trace has a mark or a note");
  };
  map(
      ID_EDIT_MARK, [this] { Mark(std::nullopt); }, withTrace);
  map(
      ID_EDIT_NOTE, [this] { EditNote(); }, withTrace);
  map(
      ID_EDIT_NEXTMARK, [this] { GoOn(true); }, withMarks);
  map(
      ID_EDIT_PREVIOUSMARK, [this] { GoOn(false); }, withMarks);
  MapColours(map);
}

void MarkCommands::MapColours(const Map& map) {
  for (std::uint8_t colour = 1; colour <= kMarkColours; ++colour)
    map(
        ID_EDIT_MARK1 + (colour - 1U), [this, colour] { Mark(colour); },
        [this, colour](CCmdUI& ui) {
          TracePane* const pane = m_shown();
          const TraceEvent_i* const trace = pane ? pane->CurrentEvent() : nullptr;
          ui.Enable(trace != nullptr);
          ui.SetCheck(trace && pane->Document().Notes().Of(*trace).colour == colour);
        });
}

void MarkCommands::Mark(std::optional<std::uint8_t> colour) {
  TracePane* const pane = m_shown();
  if (!pane) return;
  DocNotes& notes = pane->Document().Notes();
  const std::vector<std::uint64_t> numbers = pane->SelectedNumbers(DocNotes::kMost);
  if (numbers.empty()) return;
  const bool all = std::ranges::all_of(numbers, [&](std::uint64_t number) {
    const TraceEvent_i* const trace = notes.TraceAt(number);
    const std::uint8_t has = trace ? notes.Of(*trace).colour : 0;
    return colour ? has == *colour : has != 0;
  });
  if (notes.Mark(numbers, all ? 0 : colour.value_or(LastColour())) && colour)
    NtRegPut(HKEY_CURRENT_USER, kRegSettings, kLastColour, unsigned{*colour});
}

void MarkCommands::EditNote() {
  TracePane* const pane = m_shown();
  const std::optional<std::uint64_t> number = pane ? pane->CurrentNumber() : std::nullopt;
  if (!number) return;
  const std::string text = pane->CurrentEvent()->GetText();
  CNoteDialog(m_host, pane->Document().Notes(), *number, ReplaceMalformed(_MBS2UTF(text)))
      .DoModal();
}

void MarkCommands::GoOn(bool forward) {
  TracePane* const pane = m_shown();
  if (!pane || !pane->FinishFilter()) return;
  bool around = false;
  const auto number = ShownMarks(*pane).From(pane->CurrentNumber(), forward, around);
  if (!number) return Told("No trace that is shown has a mark or a note");
  Told(!around   ? ""
       : forward ? "Behind the last mark: went on with the first one"
                 : "Before the first mark: went on with the last one");
  pane->ShowNumber(*number);
}

void MarkCommands::Told(const std::string& text) {
  if (!text.empty() || m_told) m_say(text);
  m_told = !text.empty();
}
