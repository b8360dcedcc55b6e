// The save dialogs: their texts, boxes and proposals.
#include "listview/export/export_dialogs.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"

namespace {

std::string Boxes(const FileDialogRequest& request) {
  std::string boxes;
  for (const FileDialogBox& box : request.boxes)
    boxes += box.text + (box.enabled ? " enabled" : " disabled") + (box.checked ? " set\n" : "\n");
  return boxes;
}

TEST(ExportDialog, HasItsExtensionFiltersAndBoxes) {
  RecordingHost host;
  CExportDialog dialog(host, "web", true, true);
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdCancel);
  EXPECT_EQ(host.Reported(),
            "save dialog \"Export\" ext=.csv name=\"web\" filters=\"Comma-separated Files "
            "(*.csv)|*.csv|Text Files (*.txt)|*.txt|All Files (*.*)|*\" -> none\n");
  EXPECT_EQ(Boxes(host.m_fileRequests[0]),
            "Export selected items only enabled\nOutput hidden columns enabled\n");
}

TEST(ExportDialog, DisablesTheBoxesThatHaveNothingToChoose) {
  RecordingHost host;
  CExportDialog(host, "web", false, true).DoModal();
  CExportDialog(host, "web", true, false).DoModal();
  EXPECT_EQ(Boxes(host.m_fileRequests[0]),
            "Export selected items only disabled\nOutput hidden columns enabled\n");
  EXPECT_EQ(Boxes(host.m_fileRequests[1]),
            "Export selected items only enabled\nOutput hidden columns disabled\n");
}

TEST(ExportDialog, GivesThePathAndTheBoxes) {
  RecordingHost host;
  CExportDialog dialog(host, "web", true, true);
  host.AnswerFileDialog(FileDialogAnswer{"/tmp/web.csv", {false, true}});
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(dialog.GetPathName(), "/tmp/web.csv");
  EXPECT_FALSE(dialog.m_selectedOnly);
  EXPECT_TRUE(dialog.m_hiddenColumns);
}

TEST(ExportDialog, ABoxThatIsDisabledStaysClear) {
  RecordingHost host;
  CExportDialog dialog(host, "web", false, false);
  host.AnswerFileDialog(FileDialogAnswer{"/tmp/web.csv", {true, true}});
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_FALSE(dialog.m_selectedOnly);
  EXPECT_FALSE(dialog.m_hiddenColumns);
}

TEST(SaveAsDialog, HasItsExtensionFiltersAndBox) {
  RecordingHost host;
  CSaveAsDialog dialog(host, "web", false);
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdCancel);
  EXPECT_EQ(host.Reported(),
            "save dialog \"Save As\" ext=.trc name=\"web\" filters=\"Trace Files "
            "(*.trc)|*.trc|All Files (*.*)|*\" -> none\n");
  EXPECT_EQ(Boxes(host.m_fileRequests[0]), "Only save selected items disabled\n");
}

TEST(SaveAsDialog, GivesThePathAndTheBox) {
  RecordingHost host;
  CSaveAsDialog dialog(host, "web", true);
  host.AnswerFileDialog(FileDialogAnswer{"/tmp/web.trc", {true}});
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(dialog.GetPathName(), "/tmp/web.trc");
  EXPECT_TRUE(dialog.m_selectedOnly);
}

TEST(SaveAsDialog, BoxesThatDoNotComeBackAreClear) {
  RecordingHost host;
  CSaveAsDialog dialog(host, "web", true);
  host.AnswerFileDialog("/tmp/web.trc");
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_FALSE(dialog.m_selectedOnly);
}

TEST(SuggestedName, IsThePathUpToItsLastPoint) {
  EXPECT_EQ(SuggestedName("/tmp/web.trc", "web.trc"), "/tmp/web");
  EXPECT_EQ(SuggestedName("/tmp/web.1.trc", ""), "/tmp/web.1");
  EXPECT_EQ(SuggestedName("/tmp/web", ""), "/tmp/web");
}

TEST(SuggestedName, IsTheTitleWhereThereIsNoPath) {
  EXPECT_EQ(SuggestedName("", "Trace File1"), "Trace File1");
}

TEST(SuggestedName, IsCutAtTheLastPointWhereverItStands) {
  EXPECT_EQ(SuggestedName("/home/u.name/web", ""), "/home/u");
  EXPECT_EQ(SuggestedName("Traces sent to host.domain", ""), "Traces sent to host");
  EXPECT_EQ(SuggestedName(".trc", ""), "");
}

}  // namespace
