// "Statistics": how many traces the window shows of each component, category, application, thread,
// severity or pattern of the text. It stays open beside the traces and follows them and the filter.
//
// Shape    Rows are sorted by the heading that was clicked last. That and the field are kept in the
//          settings. While a row is selected, rows keep their places and further ones come behind
//          them, so that nothing moves below the mouse.
// Owner    The frame owns it; it borrows what it calls. While it is not open, nothing is counted.
// Cost     A tick takes some milliseconds at most; making the rows anew waits until it takes no
//          more than 2 % of the time.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "controls/report/report_list.h"
#include "docview/dialogs/dialog.h"
#include "statistics/stat_rows.h"

class PaneCount;
class TracePane;

// The controls of its window.
class StatisticsControls {
 public:
  virtual ReportList& List() = 0;
  virtual void ShowStatus(const std::string& text) = 0;
  virtual void EnableOnlyThis(bool on) = 0;

 protected:
  ~StatisticsControls() = default;
};

class CStatisticsDlg : public CDialog, public ReportListOwner {
 public:
  static constexpr const char* kCaption = "Statistics";
  static constexpr unsigned kTickMs = 100;
  static constexpr unsigned kField = 1170, kList = 1171, kStatus = 1172;
  const char* HelpTopic() const override { return "statistics"; }

  // Shows the window. `shown` gives the pane whose traces are counted, null if there is none;
  // `take` adds a step to the filter text.
  CStatisticsDlg(Host& host, std::function<TracePane*()> shown,
                 std::function<void(const std::string&)> take);
  ~CStatisticsDlg() override;

  // The window's controls exist, or will go.
  void Attach(StatisticsControls& controls);
  void Detach() { m_controls = nullptr; }

  StatField Field() const { return m_field; }
  void SetField(StatField field);
  // "Component", "Text Pattern": the choices, in the order of kAllStatFields.
  static const char* HeadingOf(StatField field);

  // Only This: the traces with the selected value. It stays open.
  void OnOK() override;

  std::string ReportText(int row, int column) override;
  std::vector<ReportMark> ReportMarks(int, int) override { return {}; }
  std::string ReportEmptyText() override;
  std::vector<int> ReportWidths(int roomPx) override;
  void OnReportSelection() override;
  void OnReportHeading(int column) override;
  void OnReportDoubleClick() override { OnOK(); }

  const std::vector<StatRow>& Rows() const { return m_rows; }

 private:
  using Clock = std::chrono::steady_clock;
  void OnTick();
  void BeginAnew();
  void MakeRows();
  std::vector<StatRow> NewRows();
  void ShowRows(std::vector<StatRow> rows);
  void ShowStatus();

  const std::function<TracePane*()> m_shown;
  const std::function<void(const std::string&)> m_take;
  StatisticsControls* m_controls = nullptr;
  StatField m_field;
  StatColumn m_sort;
  bool m_descending;
  std::unique_ptr<PaneCount> m_count;  // null: there is nothing to count
  std::vector<StatRow> m_rows;
  std::uint64_t m_traces = 0;  // of all rows
  bool m_changed = false;      // since the rows were made
  Clock::time_point m_nextRows;
  std::string m_refusal;  // why the last Only This did nothing
  const TimerId m_timer;
  std::unique_ptr<DialogFace> m_face;
};
