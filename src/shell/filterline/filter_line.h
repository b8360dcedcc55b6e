// The line of filter text above the rows of one window: what is typed, whether it is right, whether
// it is in force, and the texts that the window had.
//
// A text that is typed changes nothing. Apply compiles it and asks the owner to filter by it.
//
// Shape    Texts are UTF-8, one line. Places are bytes.
// Owner    The child frame owns the line, and the face while the line is shown. The line borrows
//          both; SetFace tells which face it has.
// Errors   A wrong text has an error with its place. It is not applied.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shell/filterline/filter_at_source.h"
#include "shell/filterline/filter_line_owner.h"
#include "shell/filterline/pending_text.h"
#include "shell/filterline/stored_filters.h"
#include "where/complete/where_complete.h"
#include "where/where_program.h"

class FilterLine {
 public:
  enum class State { InForce, Edited, Wrong };

  explicit FilterLine(FilterLineOwner& owner) : m_owner(owner) {}
  void SetFace(FilterLineFace* face) { m_face = face; }
  void UpdateFace() const {
    if (m_face) m_face->Update();
  }

  const std::string& Text() const { return m_text; }
  // Of the shown pane. It outlives the line.
  void SetDocument(CTraceDoc& document) {
    m_source.SetDocument(document);
    OnStatus();
  }
  // The user typed. A line end becomes a blank.
  void Edit(std::string text);
  State GetState() const;
  // Of a wrong text.
  const std::optional<WhereError>& Error() const { return m_error; }
  // There is a text, and it is right.
  bool CanBeSaved() const { return m_program != nullptr; }
  // One line that says how the text stands: "Column 10: ...".
  std::string Message() const;

  // False: the text is wrong, or the user cancelled; what was in force stays.
  bool Apply();
  // Another text, by a command: when it is not applied the line keeps its own.
  bool ApplyText(std::string text);
  // No text filters any more, and the line keeps its own. False: the user cancelled.
  bool Release();
  void PutAway() { m_owner.PutAwayFilterLine(); }
  const FilterAtSource& AtSource() const { return m_source; }
  void SetAtSource(bool on);
  // The window takes live traces now and then: shows what was withheld meanwhile.
  void Tick() {
    if (m_face && m_source.HasNews()) UpdateFace();
  }
  // The percents that are done while the text is being applied.
  std::optional<int> Percent() const;
  // Ends that: text and steps are as before. Escape does, or puts the line away.
  void Stop();
  void Escape();
  // The shown rows, the filter or its progress have changed.
  void OnStatus();

  bool CanGoBack() const { return m_steps.CanGoBack(); }
  bool CanGoForward() const { return m_steps.CanGoForward(); }
  // To the text that was in force before or after. False: there is none, or the user cancelled.
  bool GoBack();
  bool GoForward();
  // Adds a test to the text in force. False: the two make no text, or the user cancelled.
  bool AddStep(const std::string& step);

  // The tree of the filter dialog as text, added to the text in force; the tree shows all then. One
  // step. False: the two make no text, and `why` says so; or the user cancelled.
  bool TakeTree(const std::string& text, std::string* why = nullptr);
  // The marks of a tree in place of those in force and of the text. One step. False: the user
  // cancelled.
  bool BecomeTree(CTraceFilter tree);
  // Why the text does not open in the filter dialog; empty: it does, or OpenAsTree finds it out.
  std::string WhyNoTree() const;
  // Shows that dialog. False: the text does not open in it, and `why` says so.
  bool OpenAsTree(std::string* why = nullptr) const;

  std::vector<WhereCompletion> CompletionsAt(std::size_t caret) const;
  // Inserts it and gives the place behind it.
  std::size_t Complete(const WhereCompletion& completion);

  // Walks the texts that were applied in all windows, and what was typed. False: no further one.
  bool ShowOlder();
  bool ShowNewer();

 private:
  bool ApplyWith(std::optional<std::string> textBefore);
  bool ApplyWhere(PendingText now);
  void Settle();
  void Put(std::string text);
  bool IsBlank() const;
  bool ApplyTree(CTraceFilter tree, std::string text);
  bool Walk(bool back);
  bool ShowRecent(std::size_t place);

  FilterLineOwner& m_owner;
  FilterAtSource m_source{m_owner};
  FilterLineFace* m_face = nullptr;
  std::string m_text;
  std::optional<WhereError> m_error;
  WhereProgramPtr m_program;  // of the text, if it is right and not blank
  FilterSteps m_steps;
  std::optional<PendingText> m_pending;
  bool m_applying = false;            // within ApplyWhere
  std::vector<std::string> m_recent;  // while they are walked
  std::size_t m_recentPlace = 0;      // 0: what was typed, else one more than the place in m_recent
  std::string m_typed;
};
