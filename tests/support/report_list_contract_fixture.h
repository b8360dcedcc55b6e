// A report list with four rows, and what it reported, for its contract.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "controls/report/report_list.h"

class RecordingReportOwner final : public ReportListOwner {
 public:
  std::string ReportText(int row, int column) override {
    return names.at(static_cast<std::size_t>(row)) + "." + std::to_string(column);
  }
  std::vector<ReportMark> ReportMarks(int, int) override { return {}; }
  std::string ReportEmptyText() override { return "nothing here"; }
  std::vector<int> ReportWidths(int roomPx) override {
    return widths.empty() ? std::vector{roomPx / 2, roomPx - roomPx / 2} : widths;
  }
  void OnReportSelection() override {
    ++selections;
    if (list) seen = list->SelectedRows().size();
  }
  void OnReportHeading(int column) override { Note("heading " + std::to_string(column)); }
  void OnReportDoubleClick() override { Note("double"); }
  std::string Reported() { return std::exchange(m_reported, ""); }

  std::vector<std::string> names = {"net", "disk", "mail", "data"};
  std::vector<int> widths;  // empty: halves of the room
  ReportList* list = nullptr;
  int selections = 0;
  std::size_t seen = 0;  // what was selected when it was told last

 private:
  void Note(const std::string& word) { m_reported += (m_reported.empty() ? "" : ", ") + word; }
  std::string m_reported;
};

// `Harness` as support/report_list_contract.h describes it.
template <class Harness>
class ReportListContract : public testing::Test {
 protected:
  using Rows = std::vector<int>;
  ReportListContract() : m_harness(m_owner) {
    m_owner.list = &List();
    List().InsertColumn("Name");
    List().InsertColumn("State", ReportAlign::Right);
    List().SetItemCount(4);
    m_harness.SetPage(6);
    m_owner.selections = 0;
  }
  ~ReportListContract() override { m_owner.list = nullptr; }
  ReportList& List() { return m_harness.List(); }

  RecordingReportOwner m_owner;
  Harness m_harness;
};
