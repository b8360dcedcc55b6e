// The list of an application's traces with its five buttons: what the Traces page of the sheet and
// that of the wizard have in common.
//
// Shape    A row is an item of Items(), in the same order. Nothing goes to a machine from here: the
//          page reads the items when it applies them.
// Keys     The sort key stays from one fill to the next.
// Owner    Borrows its controls between Attach and Detach.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "config/traces/trace_item.h"
#include "docview/host.h"

// The list and the buttons on the screen.
class TracesControls {
 public:
  virtual ReportList& List() = 0;
  virtual void EnableButtons(bool on) = 0;

 protected:
  ~TracesControls() = default;
};

class CTracesList final : public ReportListOwner {
 public:
  // `changed` is called when ApplySettings has set rows.
  explicit CTracesList(
      Host& host, std::function<void()> changed = [] {})
      : m_host(host), m_changed(std::move(changed)) {}

  // Makes the three columns and shows the items that are there.
  void Attach(TracesControls& controls);
  void Detach() { m_controls = nullptr; }

  static constexpr char kNoTraces[] = "This application has no traces yet.";
  // Replaces the items, sorts them and shows them, or the text where there are none. Nothing is
  // selected then.
  void Fill(TraceItems items, const char* emptyText = kNoTraces);
  const TraceItems& Items() const { return m_items; }

  bool HasSelection() const { return m_controls && m_controls->List().HasSelection(); }
  // Gives all selected rows these settings.
  void ApplySettings(unsigned settings);
  // Asks for settings, beginning with all that the selected rows have.
  void OnCustom();

  std::string ReportText(int row, int column) override;
  std::vector<ReportMark> ReportMarks(int row, int column) override;
  std::string ReportEmptyText() override { return m_emptyText; }
  std::vector<int> ReportWidths(int roomPx) override { return TraceColumnWidths(roomPx); }
  void OnReportSelection() override;
  void OnReportHeading(int column) override;
  void OnReportDoubleClick() override { OnCustom(); }

 private:
  CTraceItem& Item(int row) const { return *m_items[static_cast<std::size_t>(row)]; }
  void ShowRows();

  Host& m_host;
  const std::function<void()> m_changed;
  TracesControls* m_controls = nullptr;
  int m_nSortKey = -1;
  TraceItems m_items;
  const char* m_emptyText = kNoTraces;
};
