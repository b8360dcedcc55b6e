// The list's export: which rows and columns the file gets.
#include <algorithm>

#include "drained_view.h"
#include "listview/columns/time_columns.h"
#include "support/addresses_as_text.h"
#include "support/file_limit.h"
#include "support/folder_names.h"
#include "support/zone_guard.h"

namespace {

class TraceViewExportTest : public TraceViewTest {
 protected:
  // Exports with the boxes clicked; what the file then holds.
  std::string Export(bool selectedOnly = false, bool hiddenColumns = false,
                     const std::string& name = "web.csv") {
    const std::string path = m_directory.File(name);
    m_host.AnswerFileDialog(FileDialogAnswer{path, {selectedOnly, hiddenColumns}});
    EXPECT_TRUE(m_view->OnCommand(ID_FILE_EXPORT));
    return ReadAll(path);
  }
  // "enabled disabled": the boxes of the last dialog.
  std::string Boxes() const {
    std::string states;
    for (const FileDialogBox& box : m_host.m_fileRequests.back().boxes)
      states += (states.empty() ? "" : " ") + std::string(box.enabled ? "enabled" : "disabled");
    return states;
  }
  static void ShowOnly(std::initializer_list<Column> columns) {
    g_activeColumns = {};
    for (const Column column : columns) g_activeColumns[static_cast<std::size_t>(column)] = 1;
  }
  void AddTexts(std::initializer_list<const char*> texts) {
    for (const char* text : texts) Add({.text = text});
  }
};

TEST_F(TraceViewExportTest, WritesTheShownColumnsOfAllRows) {
  m_document.m_names[7].name = "web";
  Add({.text = "up", .app = 7});
  Add({.text = "say \"down\"", .attributes = kAttributeError});
  Open();
  EXPECT_EQ(Export(),
            "\"Sev\",\"Application\",\"Component\",\"Category\",\"Trace\"\n"
            "\"Info\",\"web\",\"\",\"\",\"up\"\n"
            "\"Error\",\"\",\"\",\"\",\"say \\\"down\\\"\"\n");
}

TEST_F(TraceViewExportTest, AnEmptyListGivesTheHeaderLineOnly) {
  ShowOnly({Column::Count, Column::Trace});
  Open();
  EXPECT_EQ(Export(), "\"Count\",\"Trace\"\n");
}

TEST_F(TraceViewExportTest, WithoutASelectionTheBoxForSelectedRowsIsDisabled) {
  AddTexts({"a"});
  Open();
  Export();
  EXPECT_EQ(Boxes(), "disabled enabled");
  Focus(0);
  Export();
  EXPECT_EQ(Boxes(), "enabled enabled");
}

TEST_F(TraceViewExportTest, WithAllColumnsShownTheBoxForHiddenColumnsIsDisabled) {
  g_activeColumns.fill(1);
  Open();
  Export();
  EXPECT_EQ(Boxes(), "disabled disabled");
}

TEST_F(TraceViewExportTest, HiddenColumnsStandInTheirPlacesOfTheScreenOrder) {
  AddTexts({"a"});
  Open();
  ColumnOrder order = kDefaultColumnOrder;
  std::swap(order[0], order[13]);  // "Sev" and "Trace"
  m_list->SetColumnOrder(ListOrderOf(order));
  const std::string text = Export(false, true);
  EXPECT_EQ(text.substr(0, text.find('\n')),
            "\"Trace\",\"Count\",\"Tic Count\",\"Tic Diff\",\"Time\",\"Machine\",\"Application\","
            "\"Component\",\"Category\",\"Attributes\",\"PID\",\"TID\",\"Stack\",\"Sev\","
            "\"Source\"");
}

TEST_F(TraceViewExportTest, ShownColumnsStandInTheScreenOrder) {
  ShowOnly({Column::Count, Column::Trace});
  AddTexts({"a"});
  Open();
  ColumnOrder order = kDefaultColumnOrder;
  std::reverse(order.begin(), order.end());
  m_list->SetColumnOrder(ListOrderOf(order));
  EXPECT_EQ(Export(), "\"Trace\",\"Count\"\n\"a\",1\n");
}

TEST_F(TraceViewExportTest, ColumnsOfTimesDoNotGoOut) {
  for (const Column column : kTimeColumns) ShowTimeColumn(column, true);
  g_activeColumns.fill(1);
  Add({.text = "a"});
  Open();
  ListOrder order = m_list->GetColumnOrder();
  std::ranges::rotate(order, order.begin() + 7);
  m_list->SetColumnOrder(order);
  const std::string text = Export();
  EXPECT_EQ(std::ranges::count(text.substr(0, text.find('\n')), ','), 14);
  EXPECT_EQ(text.find("Delta"), text.npos);
  EXPECT_EQ(text.find("Wall"), text.npos);
}

TEST_F(TraceViewExportTest, OnlyTheSelectedRowsGoOut) {
  ShowOnly({Column::Count, Column::Trace});
  AddTexts({"a", "b", "c", "d"});
  Open();
  m_list->SetItemState(1, kRowSelected, kRowSelected);
  m_list->SetItemState(3, kRowSelected, kRowSelected);
  m_list->SetItemState(0, kRowFocused, kRowFocused);
  EXPECT_EQ(Export(true), "\"Count\",\"Trace\"\n2,\"b\"\n4,\"d\"\n");
}

TEST_F(TraceViewExportTest, ASelectedExportTakesThePreviousTraceFromTheFullList) {
  const AddressesAsText asText;
  ShowOnly({Column::Count, Column::TicDiff});
  for (const std::uint64_t tic : {100, 130, 150, 155}) Add({.tic = tic});
  Open();
  for (const int row : {0, 1, 3}) m_list->SetItemState(row, kRowSelected, kRowSelected);
  EXPECT_EQ(Export(true), "\"Count\",\"Tic Diff\"\n1,\"n/a\"\n2,30\n4,5\n");
}

TEST_F(TraceViewExportTest, ThePreviousTraceIsTheRowAboveAndNotAHiddenOne) {
  const AddressesAsText asText;
  ShowOnly({Column::Count, Column::TicDiff});
  Add({.tic = 100});
  Add({.component = 9, .tic = 130});
  Add({.tic = 155});
  Open();
  HideNine();
  EXPECT_EQ(Export(), "\"Count\",\"Tic Diff\"\n1,\"n/a\"\n3,55\n");
}

TEST_F(TraceViewExportTest, OnlyWhatPassesTheFilterGoesOut) {
  ShowOnly({Column::Count});
  Add({.component = 9});
  Add({});
  Add({.component = 9});
  Open();
  HideNine();
  EXPECT_EQ(Export(), "\"Count\"\n2\n");
}

TEST_F(TraceViewExportTest, RowsThatComeWhileTheDialogStandsAreWritten) {
  ShowOnly({Column::Count, Column::Trace});
  EXPECT_EQ(DrainedView().Written(ID_FILE_EXPORT, m_directory.File("late.csv")),
            "\"Count\",\"Trace\"\n9,\"late\"\n");
}

TEST_F(TraceViewExportTest, ATextFileHasTheSameContent) {
  ShowOnly({Column::Count, Column::Trace});
  AddTexts({"a", "b"});
  Open();
  EXPECT_EQ(Export(false, false, "web.txt"), "\"Count\",\"Trace\"\n1,\"a\"\n2,\"b\"\n");
}

TEST_F(TraceViewExportTest, TimesFollowTheOption) {
  const ZoneGuard zone("EST5");
  ShowOnly({Column::Time});
  Add({});
  Open();
  EXPECT_EQ(Export(), "\"Time\"\n\"2026-11-21 09:41:07.123\"\n");
  g_useUtc = false;
  EXPECT_EQ(Export(), "\"Time\"\n\"2026-11-21 04:41:07.123\"\n");
}

TEST_F(TraceViewExportTest, TheDocumentStaysAsItWas) {
  AddTexts({"a"});
  Open();
  m_document.SetPathName(m_directory.File("web.trc"), false);
  const std::vector<std::string> calls = m_list->calls;
  Export();
  EXPECT_TRUE(m_document.IsModified());
  EXPECT_EQ(m_document.GetPathName(), m_directory.File("web.trc"));
  EXPECT_EQ(m_host.m_fileRequests.back().suggestedName, m_directory.File("web"));
  EXPECT_EQ(m_list->calls, calls);
}

TEST_F(TraceViewExportTest, AFileThatCannotBeOpenedIsReported) {
  Open();
  m_host.ClearTranscript();
  m_host.AnswerFileDialog("/nowhere/web.csv");
  m_view->OnCommand(ID_FILE_EXPORT);
  EXPECT_EQ(m_host.Transcript().back(),
            "box Tessera [none] \"Error opening output file.\" (OK) -> OK");
}

TEST_F(TraceViewExportTest, AWriteThatFailsIsNotReported) {
  AddTexts({"a"});
  Open();
  m_host.AnswerFileDialog("/dev/full");
  m_view->OnCommand(ID_FILE_EXPORT);
  EXPECT_EQ(m_host.Reported().find("box"), std::string::npos);
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(TraceViewExportTest, AFullDiskLeavesThePartThatWasWrittenAndNoOtherFile) {
  for (int i = 0; i < 2000; ++i) Add({.text = "the disk gets full"});
  Open();
  const std::string folder = m_directory.File("out"), path = folder + "/web.csv";
  std::filesystem::create_directory(folder);
  const auto write = [&] {
    m_host.ClearTranscript();
    m_host.AnswerFileDialog(path);
    m_view->OnCommand(ID_FILE_EXPORT);
    return ReadAll(path);
  };
  const std::string whole = write();
  ASSERT_GT(whole.size(), 10'000U);
  std::string part;
  {
    const FileLimit full(5000);
    part = write();
  }
  EXPECT_EQ(part, whole.substr(0, 5000));
  EXPECT_EQ(m_host.Reported().find("box"), std::string::npos);
  EXPECT_EQ(NamesIn(folder), std::set<std::string>{"web.csv"});
  EXPECT_EQ(write(), whole);
}

TEST_F(TraceViewExportTest, CancelWritesNothing) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::create_directory(m_directory.File("here"));
  std::filesystem::current_path(m_directory.File("here"));
  m_document.SetTitle("web");
  Open();
  m_view->OnCommand(ID_FILE_EXPORT);
  std::filesystem::current_path(before);
  EXPECT_EQ(m_host.m_fileRequests.size(), 1u);
  EXPECT_TRUE(std::filesystem::is_empty(m_directory.File("here")));
  EXPECT_EQ(m_host.Reported().find("box"), std::string::npos);
}

}  // namespace
