// "Marks": the marks and notes of the document beside the rows of a window.
//
// Shape    A row for each trace with a mark or a note, whatever the filter shows, in the order of
//          the traces. Behind them come the rows of the notes file that do not apply, each with the
//          reason. Enter goes to the trace, Delete takes mark and note away.
// Cost     A painted row costs the same however many there are. The rows are made anew when marks
//          have changed, in a step of their own.
// Owner    Owns its list; borrows the pane.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "controls/list/row_list.h"
#include "docview/posted_step.h"
#include "panes/trace_pane.h"
#include "shell/beside/beside_pane.h"

class MarksPane final : public BesidePane, public RowListOwner {
 public:
  enum Column { kMark, kIndex, kTime, kNote, kTrace };
  using Say = std::function<void(const std::string&)>;

  // `say` shows a line of text.
  MarksPane(Host& host, const RowListMaker& makeList, Say say);

  std::string Title() const override { return "Marks"; }
  ViewControl& Control() override { return *m_list; }
  void OnPane(TracePane& pane) override;
  void OnShown(bool seen) override;
  void OnShownTraces() override { m_step.Ask(); }

  std::string RowListText(int row, ListColumn column) override;
  int RowListIcon(int) override { return -1; }
  RowTint RowListTint(int row) override;
  std::optional<RowMark> RowListMark(int row) override;
  std::vector<HitRange> RowListHits(int, ListColumn) override { return {}; }
  std::string RowListEmptyText() override;
  void OnRowStateChanged(int, unsigned, unsigned) override {}
  void OnRowClicked(int) override {}
  void OnRowDoubleClicked(int row) override;
  bool OnRowListDelete() override;
  void OnRowListContextMenu(int, int) override {}
  bool OnColumnResizing(ListColumn, int) override { return false; }
  void OnColumnResized(ListColumn, int) override {}
  void OnColumnsReordered() override {}

 private:
  const DocNotes& Notes() const { return m_pane->Document().Notes(); }
  // Of the row; nothing for one that does not apply.
  std::optional<std::uint64_t> NumberAt(int row) const;
  const FileNotes::Kept* OtherAt(int row) const;
  std::string OtherText(const FileNotes::Kept& other, Column column) const;
  std::string TraceText(std::uint64_t number, Column column) const;
  void Look();
  void MakeRows();
  bool MayRemove(const RowRanges& rows) const;

  Host& m_host;
  const std::unique_ptr<RowList> m_list;
  const Say m_say;
  TracePane* m_pane = nullptr;
  bool m_seen = false;
  // Of what the rows were made.
  const DocNotes* m_of = nullptr;
  std::uint64_t m_changes = 0;
  std::vector<std::uint64_t> m_numbers;
  PostedStep m_step;
};
