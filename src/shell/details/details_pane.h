// The details of the trace that has the focus, beside the rows: all fields as in its properties,
// the whole text, the call stack. They follow the list or the tree while the user walks it.
//
// Shape    A trace is read once, in a step after all that an event has changed; so a held arrow key
//          costs one reading for each turn of the loop. What is shown is a copy: a trace that is
//          trimmed while it is shown is never read again.
// Owner    Owns its face. Borrows the shown pane, and its traces while it reads one.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "docview/host_timer.h"
#include "docview/posted_step.h"
#include "listview/details/stack_namer.h"
#include "panes/cell_steps.h"
#include "shell/beside/beside_pane.h"
#include "shell/details/detail_body.h"
#include "shell/details/details_face.h"

class TraceEvent_i;

struct DetailRow {
  std::string caption;                 // "Component"; empty for a further line of the stack
  std::string value;                   // UTF-8, as the trace has it
  std::string hint;                    // more about it; mostly empty
  std::optional<CellValue> cell = {};  // what filter steps compare with
  std::string sourcePath = {};         // where Goto Source leads; empty: nowhere
  unsigned sourceLine = 0;
};

class DetailsPane final : public BesidePane {
 public:
  static constexpr std::size_t kTextBytes = DetailBody::kFirstBytes;

  using MakeFace = std::function<std::unique_ptr<DetailsFace>(DetailsPane&)>;
  // `takeStep` adds a test to the filter text in force.
  DetailsPane(Host& host, const MakeFace& makeFace,
              std::function<void(const std::string&)> takeStep);

  std::string Title() const override { return "Details"; }
  ViewControl& Control() override { return *m_face; }
  void OnPane(TracePane& pane) override;
  void OnShown(bool seen) override;
  void OnCurrentTrace() override { m_look.Ask(); }
  void OnShownTraces() override { m_look.Ask(); }
  void OnRemoval(const CTraceHint& removed) override;

  // ---- for the face
  // Why there is no trace, or what has become of it; empty otherwise.
  std::string Message() const;
  const std::vector<DetailRow>& Rows() const { return m_rows; }
  const DetailBody& Body() const { return m_body; }
  void ShowAll();
  // The JSON in texts on lines of its own.
  void SetPretty(bool on);
  // "Component: Sql", a line for each; rows that do not exist are left out.
  std::string CopyText(const std::vector<std::size_t>& rows) const;
  // Only This and Hide This for a row.
  std::vector<CellStep> StepsOf(std::size_t row) const;
  void TakeStep(std::string text) { m_takeStep(text); }
  bool HasSource(std::size_t row) const;
  // Last in a handler: it may run for as long as the user likes.
  void GotoSource(std::size_t row) const;

 private:
  enum class State { None, Shown, Trimmed };

  void Look();
  void Leave();
  bool IsShown(const TraceEvent_i* event) const;
  void Read(const TraceEvent_i& event);
  void ReadRows(const TraceEvent_i& event);
  void ReadStack(const std::string& stack);
  void AddRow(const char* caption, std::string value, std::optional<CellValue> cell = {});
  void NameStack();

  Host& m_host;
  const std::function<void(const std::string&)> m_takeStep;
  TracePane* m_pane = nullptr;
  bool m_seen = false;
  State m_state = State::None;
  std::optional<State> m_told;  // to the face, since it is seen
  // What is shown, to be compared and never read: the trace, its list's generation, the zone.
  const TraceEvent_i *m_event = nullptr, *m_above = nullptr;
  std::uint64_t m_generation = 0;
  bool m_utc = false;
  WhereProgramPtr m_where;

  std::vector<DetailRow> m_rows;
  std::size_t m_firstFrame = 0;  // among the rows
  std::string m_stack;
  DetailBody m_body;
  StackNamer m_namer;
  std::unique_ptr<HostTimer> m_standing;  // until the trace has been shown for a moment
  PostedStep m_look;
  std::unique_ptr<DetailsFace> m_face;  // last: it reads the rest until it ends
};
