// The list view of a trace document: rows, cells, hints, selection, commands.
//
// Owner    Owns its row list and row store; borrows the traces.
// Errors   A cell that cannot be made stays empty.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "controls/list/row_list.h"
#include "listview/colours/list_colours.h"
#include "listview/colours/row_colourer.h"
#include "listview/columns/row_columns.h"
#include "listview/rows/row_filtering.h"
#include "listview/time/time_cells.h"
#include "panes/trace_pane.h"

class CTraceView : public TracePane, public RowListOwner {
 public:
  CTraceView(CTraceDoc& document, const RowListMaker& makeList);
  ~CTraceView() override;
  // The text is applied in the background (row_filtering.h).
  bool SetWhere(WhereProgramPtr where) override;
  std::optional<int> FilterProgress() const override;
  void CancelFilter() override;
  bool FinishFilter() override;

  void OnInitialUpdate() override;
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override;
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
  ViewControl* Control() override { return m_list.get(); }
  TraceEvent_i* CurrentEvent() const override;  // of the focused row; null when it was trimmed
  const TraceEvent_i* EventAbove() const override { return EventOfRow(m_currentRow - 1); }
  std::vector<std::uint64_t> SelectedNumbers(std::size_t most) const override;
  void ShowNumber(std::uint64_t number) override;
  void VisitPage(const VisitTrace& visit) const override;
  // For the colours of a page by rules; the rest comes with the next painting.
  std::chrono::nanoseconds m_colourTime = RowColourer::kPageTime;
  const RowStore& Rows() const { return m_rows; }
  RowList& List() const { return *m_list; }
  RowColumns& Columns() { return m_columns; }
  ListColours& Colours() { return m_colours; }
  bool AtBottom() const;  // the last row is visible: the list scrolls with new rows
  // To the next row whose text matches, after the focused one; a message without one.
  void FindInRows();

  std::string RowListText(int row, ListColumn column) override;
  int RowListIcon(int row) override;
  RowTint RowListTint(int row) override;
  std::optional<RowColours> RowListColours(int row) override;
  void OnRowListPaint(bool begins) override;
  std::optional<RowMark> RowListMark(int row) override;
  std::vector<HitRange> RowListHits(int row, ListColumn column) override;
  std::string RowListEmptyText() override;
  void OnRowStateChanged(int row, unsigned oldState, unsigned newState) override;
  void OnRowClicked(int row) override;
  void OnRowDoubleClicked(int row) override;
  void OnRowListContextMenu(int screenXPx, int screenYPx) override;
  void OnRowListScrolled() override { Tell(&PaneWatcher::OnScrolled); }
  void OnHeaderContextMenu(std::optional<ListColumn> column, int xPx, int yPx) override;
  bool OnColumnResizing(ListColumn column, int widthPx) override;
  void OnColumnResized(ListColumn column, int widthPx) override;
  void OnColumnsReordered() override;

 private:
  int TraceCount() const override { return m_rows.Size(); }
  bool ShowsAny() const override { return m_rows.Size() > 0; }
  void RepaintHits() override { m_list->Repaint(); }
  bool Rebuild() override { return RebuildRows(); }
  void OnOptions() override;
  void OnReady() override;
  void AddTraces(const CTraceHint& hint) override;
  void RemoveTraces(const CTraceHint& hint) override;
  void FollowTrace(CView* sender, const TraceEvent_i& target) override;
  std::unique_ptr<CTraceIterator> MakeIterator() override;
  void Find(bool asked) override;
  void OnExport() override;
  std::unique_ptr<CopiedTraces> Selected() override;

  TimeCells& Times();
  std::string TimeText(int row, Column column);
  void OnTimeReference();
  bool RebuildRows();
  bool FilterInto(RowStore& rows);
  void AddRows(const CTraceHint& hint, CTraceFilter& filter);
  void ShowRows(RowStore& rows, bool atEnd);
  void BeginFiltering(WhereProgramPtr where);
  void EndFiltering();
  void FollowZone();
  void GoOnFiltering();
  void ShowFew();
  void StepFiltering(std::chrono::milliseconds time, bool wait);  // takes so long, or a little
  void ShowNewRows(bool whole);
  void CompleteRows();
  void RestoreRows();
  void LookForFocus(TraceScan::Clock::time_point until);
  void SelectFound(int row);
  void ShowFound(int row, CView* sender);
  void FollowWhileFiltering(CView* sender, const TraceEvent_i& target);
  void ShowProgress();
  void AddWhileFiltering(const CTraceHint& hint);
  void SelectRow(CView* sender, int row);
  TraceEvent_i* EventOfRow(int row) const;  // null when there is no such row
  void Invalidate();
  void OnSaveTraces();

  RowStore m_rows;
  std::unique_ptr<RowList> m_list;
  RowColumns m_columns{*m_list};
  ListColours m_colours;
  std::unique_ptr<TimeCells> m_times;       // null: no column of times was asked for
  std::unique_ptr<RowColourer> m_colourer;  // null: no colour rules are in use
  PostedStep m_paintLate{GetHost(), [this] { m_list->Repaint(); }};
  bool m_firstUpdate = true, m_utc = false;  // m_utc: the zone of the rows
  int m_currentRow = -1;                     // the focused row, as last reported by the list
  PostedStep m_step{GetHost(), [this] { GoOnFiltering(); }};
  std::unique_ptr<RowFiltering> m_filtering;  // null: no text is being applied
};
