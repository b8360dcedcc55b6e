// The list view of a trace document: rows, cells, hints, selection, commands.
//
// Owner    Owns its row list, row store and filter; borrows the traces. What it keeps of a trace
//          goes when the document says that the trace goes; a cleared one is never read.
// Errors   A cell that cannot be made stays empty.
// Threads  Interface thread.
#pragma once

#include <array>
#include <functional>
#include <memory>

#include "controls/list/row_list.h"
#include "documents/trace_doc.h"
#include "docview/view.h"
#include "listview/columns/columns.h"
#include "listview/rows/row_store.h"
#include "tree/filter/trace_filter.h"
#include "tree/find/find_hits.h"

using RowListMaker = std::function<std::unique_ptr<RowList>(RowListOwner&)>;

class CTraceView : public CView, public RowListOwner {
 public:
  CTraceView(CTraceDoc& document, const RowListMaker& makeList);
  ~CTraceView() override;

  void OnInitialUpdate() override;
  void OnActivateView(bool activate, CView* activated, CView* deactivated) override;
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override;
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
  ViewControl* Control() override { return m_list.get(); }

  // The trace of the focused row, null without one or when the row has gone.
  TraceEvent_i* CurrentEvent() const;
  // Copies the filter and clears the changed mark. False when the person cancelled the rebuild:
  // then filter, mark and rows are as before.
  bool SetFilter(const CTraceFilter& filter, bool rebuild);
  // Where the selection goes after a rebuild or a return from the tree. Written by the frame before
  // it comes back: what the tree had selected. Null once its trace has gone.
  TraceEvent_i* m_currentEvent = nullptr;
  CTraceFilter m_filter;
  bool m_filterChanged = false;  // changed here since it last went to the other view

  CTraceDoc& Document() const { return m_document; }
  const RowStore& Rows() const { return m_rows; }
  RowList& List() const { return *m_list; }
  bool AtBottom() const;  // the last row shows, so that the list follows what is added
  // Goes on from the focused row to the next one whose text matches; says so when there is none.
  void FindInRows();
  // Sends hint 1006 for the event to the other views if the document synchronises.
  void Follow(TraceEvent_i* event);

  std::string RowListText(int row, ListColumn column) override;
  int RowListIcon(int row) override;
  RowTint RowListTint(int row) override;
  std::vector<HitRange> RowListHits(int row, ListColumn column) override;
  std::string RowListEmptyText() override;
  void OnRowStateChanged(int row, unsigned oldState, unsigned newState) override;
  void OnRowClicked(int row) override;
  void OnRowDoubleClicked(int row) override;
  void OnRowListContextMenu(int screenXPx, int screenYPx) override;
  bool OnColumnResizing(ListColumn column, int widthPx) override;
  void OnColumnResized(ListColumn column, int widthPx) override;
  void OnColumnsReordered() override;

 private:
  void CreateColumns();
  ColumnOrder ShownOrder() const;
  void ApplyActiveColumns();
  void OnFitColumns();
  bool RebuildRows();
  bool FilterInto(RowStore& rows);
  void AddRows(const CTraceHint& hint);
  void RemoveRows(const CTraceHint& hint);
  void FollowTrace(CView* sender, const TraceEvent_i& target);
  void SelectRow(CView* sender, int row);
  TraceEvent_i* EventOfRow(int row) const;  // null when there is no such row
  void TellStatus();
  void Invalidate();
  void ShowHits(bool on);
  void OnSynchronize();
  void MapFindCommands();
  void OnEditFind();
  void MapDialogCommands();
  void OnViewProperties();
  void OnFilter();
  void OnGotoSource();
  void OnUpdateGotoSource(CCmdUI& ui);
  void OnExport();
  void OnSaveTraces();

  CTraceDoc& m_document;
  RowStore m_rows;
  std::unique_ptr<RowList> m_list;
  bool m_firstUpdate = true;
  std::array<std::int32_t, kColumnCount> m_columnWidths = {};
  int m_currentRow = -1;  // of the focused row, as the list last told
  bool m_active = false;
  std::unique_ptr<FindHits> m_hits;  // of the search that has put the focus where it stands
};
