// "Hits": all hits of the last search in the rows that the window shows. Whoever goes from one to
// the next is led to its row.
//
// Shape    A row for each trace with a hit: its place in the window, its time, its text around the
//          first hit. Rows are asked for when they are painted, so millions of hits cost nothing.
//          The list grows while the hits are counted.
// Owner    Owns its list; borrows the pane that it follows.
// Cost     While it is seen, a look at a number ten times a second.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "controls/list/row_list.h"
#include "docview/host_timer.h"
#include "docview/posted_step.h"
#include "shell/beside/beside_pane.h"
#include "tree/find/count/hit_count.h"
#include "tree/find/find_hits.h"

class HitsPane final : public BesidePane, private RowListOwner {
 public:
  using MakeList = std::function<std::unique_ptr<RowList>(RowListOwner&)>;
  enum Columns { kRow, kTime, kText };
  static constexpr unsigned kLookMs = 100;

  // `focusRows` gives the focus of the keys to the rows of the window.
  HitsPane(Host& host, const MakeList& makeList, std::function<void()> focusRows);
  ~HitsPane() override;

  std::string Title() const override { return "Hits"; }
  ViewControl& Control() override { return *m_list; }
  void OnPane(TracePane& pane) override;
  void OnShown(bool seen) override;

  RowList& List() { return *m_list; }

 private:
  std::string RowListText(int row, ListColumn column) override;
  int RowListIcon(int row) override;
  RowTint RowListTint(int) override { return RowTint::None; }
  std::vector<HitRange> RowListHits(int row, ListColumn column) override;
  std::string RowListEmptyText() override;
  void OnRowStateChanged(int row, unsigned oldState, unsigned newState) override;
  void OnRowClicked(int row) override;
  void OnRowDoubleClicked(int row) override;
  void OnRowListContextMenu(int, int) override {}
  bool OnColumnResizing(ListColumn, int) override { return false; }
  void OnColumnResized(ListColumn column, int widthPx) override;
  void OnColumnsReordered() override {}

  void MakeColumns();
  void Look();
  void Show(const HitCount* hits);
  void GoTo(int hit);
  const HitCount* Hits() const;
  const TraceEvent_i* TraceOf(int hit) const;  // null: gone
  // The part of its text that is shown, and the hits of the whole text in it.
  struct Part {
    std::string text;
    std::vector<HitRange> hits;
  };
  Part Around(const TraceEvent_i& trace);

  Host& m_host;
  const std::function<void()> m_focusRows;
  TracePane* m_pane = nullptr;
  const std::unique_ptr<RowList> m_list;
  std::optional<HostTimer> m_timer;  // while it is seen
  std::uint64_t m_version = 0;       // of the count that is shown; 0: none is
  std::unique_ptr<FindHits> m_hits;
  std::optional<RegexProgram> m_program;  // of m_hits
  bool m_changing = false;                // the rows, by this pane
  int m_wanted = -1;
  PostedStep m_go;
};
