// The strip of time over the rows: how many traces there are in each slice of time, which of them
// the rows show, and the ways from here to there.
//
// Shape    It shows the traces that pass the filter of the shown pane. Left and Right move a cursor
//          by one bar; the first of them begins at the page that the rows show. A range is chosen
//          by dragging or with Shift and becomes a step of the filter text.
// Owner    FrameOverview owns the strip and its face. The strip watches the pane it is given until
//          SetPane(null). Borrows all else.
// Cost     One PaneSlices, two while a zoom is counted. The timer rests while all is counted and
//          nothing comes.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "docview/host_timer.h"
#include "overview/window/overview_bars.h"
#include "overview/window/overview_face.h"
#include "overview/window/pane_slices.h"
#include "panes/trace_pane.h"

class OverviewStrip final : public PaneWatcher {
 public:
  enum class Key { Left, Right, Home, End, Enter, Escape, ZoomIn, ZoomOut, Far };
  static constexpr unsigned kTickMs = 50;

  OverviewStrip(Host& host, OverviewOwner& owner) : m_host(host), m_owner(owner) {}
  ~OverviewStrip() { SetPane(nullptr); }
  void SetFace(OverviewFace* face) { m_face = face; }
  // The shown one; null: none.
  void SetPane(TracePane* pane);
  // Of the bars: the room, and how narrow and wide one may be.
  void SetSize(int widthPx, int leastBarPx, int mostBarPx);

  // ---- what is shown
  OverviewScale Scale() const;
  std::vector<OverviewBar> Bars() const;
  std::vector<OverviewLabel> Labels(const std::function<int(const std::string&)>& widthPx) const;
  // The times of the rows on the page, the range that is being chosen, the bar with the cursor.
  std::optional<TimeLimits> Page() const { return m_page; }
  std::optional<TimeLimits> Chosen() const;
  std::optional<TimeLimits> Cursor() const;
  // Pixels of traces with a mark or a note, and of hits of the last search, in order and once each.
  std::vector<int> MarkTicks() const;
  std::vector<int> HitTicks() const;
  bool IsZoomed() const { return m_zoom.has_value(); }
  bool ShowsFar() const { return m_showsFar; }  // times that lie far from all others
  bool IsWhole() const { return m_slices && m_slices->IsWhole() && !m_coming; }
  // All in one line; and what the cursor or the choice has. For people who do not see the strip.
  std::string Description() const;
  // In place of bars; empty: there are some.
  std::string EmptyText() const;
  // Of the bar at a pixel.
  std::string TextAt(int px) const;

  // ---- the user
  void Press(int px);
  void Drag(int px);
  void Release(int px);
  // Ends a drag without a choice.
  void CancelDrag();
  // Half the span for each notch away from the user, twice the span for one towards him.
  void Wheel(int px, int notches);
  void ZoomOut();
  void ShowFar(bool on);
  void OpenMenu(int screenXPx, int screenYPx);
  bool OnKey(Key key, bool shift);  // false: it means nothing here

  void OnCurrentTrace() override { OnScrolled(); }
  void OnShownTraces() override;
  void OnRemoval(const CTraceHint& removed) override;
  void OnScrolled() override;
  const PaneSlices* Counted() const { return m_slices.get(); }

 private:
  using Clock = std::chrono::steady_clock;
  void OnTick();
  void Wake();
  bool Renew();
  bool StepSlices();
  void ReadPage();
  bool HasNewHits();
  void SetZoom(const std::optional<TimeLimits>& zoom);
  void CountAnew();
  void ZoomAround(std::int64_t time, int notches);
  const TimeSlices* Shown() const;
  TimeLimits WholeSpan() const;
  std::optional<TimeLimits> Wanted() const;
  OverviewEndNotes FarNotes() const;
  bool IsAnyFar() const;
  TimeLimits BarOf(std::int64_t time) const;
  template <class VisitAll>
  std::vector<int> TicksOf(const VisitAll& visitAll) const;
  void Move(Key key, bool shift);
  void GoTo(const TimeLimits& bar);
  void FilterBy(const TimeLimits& range);
  void Show();

  Host& m_host;
  OverviewOwner& m_owner;
  OverviewFace* m_face = nullptr;
  TracePane* m_pane = nullptr;
  std::optional<HostTimer> m_timer;
  Clock::time_point m_nextShow;
  std::uint64_t m_hits = 0;  // the version of those that are shown
  bool m_isStale = false, m_isPageStale = false;
  std::unique_ptr<PaneSlices> m_slices, m_coming;  // m_coming takes its place when it is whole
  PieceTimesPtr m_times;                           // of all traces of a file that pass the filter
  TimeLimits m_whole{0, 1};                        // the last span without a zoom
  std::optional<TimeLimits> m_zoom, m_page;
  std::optional<std::int64_t> m_cursor, m_anchor;
  std::optional<int> m_pressedPx;
  bool m_isDrag = false, m_showsFar = false;
  const std::shared_ptr<char> m_mark = std::make_shared<char>();  // for an open menu
  int m_widthPx = 0, m_leastBarPx = 4, m_mostBarPx = 24;
};
