// Saves a configuration.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <optional>

#include "config_doc_fixture.h"
#include "docview/commands/command_ids.h"
#include "support/file_limit.h"

namespace {

using testing::HasSubstr;

using ConfigSaveTest = ConfigDocTest;

TEST_F(ConfigSaveTest, ASavedFileOpenedInASecondWindowMakesTheSameApplicationsThere) {
  FakeMachine::App& orders = m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0);
  orders.traces[1].settings = 0x31F;
  orders.sinkType = trc_SinkFile;
  orders.sinkName = "c:\\logs\\o.trc";
  m_machine.Run("billing", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("orders");
  doc->AddApplication("billing");
  EXPECT_TRUE(doc->OnSaveDocument(m_folder.File("b.tcf")));
  EXPECT_FALSE(doc->IsModified());
  FakeMachine second;
  second.Run("billing", {"Net/Connect"}, 0);
  second.Run("orders", {"Net/Connect", "Net/Close"}, 1);
  std::swap(m_machine, second);
  const auto other = Connected();
  EXPECT_TRUE(other->OnOpenDocument(m_folder.File("b.tcf")));
  EXPECT_EQ(Names(*other), "orders billing ");
  EXPECT_EQ(m_machine.InForce("orders") + " " + m_machine.InForce("billing"),
            "Net/Connect=0 Net/Close=799 Net/Connect=7");
  EXPECT_EQ(m_machine.m_apps["orders"].sinkName, "c:\\logs\\o.trc");
  EXPECT_EQ(m_machine.m_apps["orders"].sinkType, trc_SinkFile);
}

TEST_F(ConfigSaveTest, AFailedSaveIsReportedAndTheDocumentStaysModified) {
  const auto doc = Connected();
  doc->AddApplication("a");
  Boxes();
  const std::string path = m_folder.File("a.tcf", "before");
  EXPECT_FALSE(doc->OnSaveDocument(m_folder.File("none/a.tcf")));
  EXPECT_EQ(Boxes(), Error("Error opening file."));
  EXPECT_FALSE(doc->OnSaveDocument("/dev/full"));
  EXPECT_EQ(Boxes(), Error("Error opening file.")) << "the header cannot be written";
  {
    const FileLimit limit(20);
    EXPECT_FALSE(doc->OnSaveDocument(path));
  }
  EXPECT_EQ(Boxes(), Error("Error writing to file."));
  EXPECT_EQ(ReadAll(path), "TCF Version 3.2\nAPP:") << "as far as it came";
  doc->GetApplications()->m_apps.front()->SetSink(static_cast<trc_SinkTypes_e>(7), "", "");
  EXPECT_FALSE(doc->OnSaveDocument(path));
  EXPECT_EQ(Boxes(), Error("Unsupported Sink Type."));
  EXPECT_EQ(ReadAll(path), "TCF Version 3.2\nAPP: \"a\"\nSINK: ");
  EXPECT_TRUE(doc->IsModified());
}

TEST_F(ConfigSaveTest, AFileDoesNotGrowBehindTheBoxOfAFailedSave) {
  const auto doc = Connected();
  doc->AddApplication("a");
  Boxes();
  const std::string path = m_folder.File("a.tcf");
  for (const unsigned bytes : {5U, 20U}) {
    std::optional<FileLimit> limit(bytes);
    m_host.m_duringBox = [&] { limit.reset(); };  // the disk has room again
    EXPECT_FALSE(doc->OnSaveDocument(path));
    EXPECT_EQ(Boxes(), Error(bytes == 5 ? "Error opening file." : "Error writing to file."));
    EXPECT_EQ(ReadAll(path), std::string("TCF Version 3.2\nAPP: \"a\"\n").substr(0, bytes));
  }
}

TEST_F(ConfigSaveTest, AFileIsWrittenUnderAWaitCursorThatIsGoneBeforeABox) {
  const auto doc = Connected();
  Shown();
  EXPECT_TRUE(doc->OnSaveDocument(m_folder.File("a.tcf")));
  EXPECT_EQ(Shown(), kWaited);
  EXPECT_FALSE(doc->OnSaveDocument("/dev/full"));
  EXPECT_EQ(Shown(), kWaited + Error("Error opening file."));
}

// Opening it would block until another program uses its other end.
TEST_F(ConfigSaveTest, APipeIsNeitherReadNorWritten) {
  const std::string pipe = m_folder.File("pipe.tcf");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto doc = Connected();
  doc->AddApplication("a");
  Boxes();
  EXPECT_FALSE(doc->OnSaveDocument(pipe));
  EXPECT_THAT(Boxes(), HasSubstr("\"Error opening file.\""));
  EXPECT_FALSE(doc->OnOpenDocument(pipe));
  EXPECT_THAT(Boxes(), HasSubstr("\"Error opening file.\""));
  EXPECT_EQ(Names(*doc), "a ");
}

TEST_F(ConfigSaveTest, SaveOfAWindowWithoutAFileAsksForOne) {
  const auto doc = Connected();
  doc->AddApplication("a");
  const std::string path = m_folder.File("new.tcf");
  m_host.AnswerFileDialog(path);
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE));
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
  EXPECT_EQ(doc->GetPathName(), path);
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  doc->SetModifiedFlag(true);
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE)) << "in place";
  EXPECT_EQ(Boxes(), "");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE_AS));
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
}

TEST_F(ConfigSaveTest, SaveAsksAlsoWhereAFileHasTheNameOfTheUnnamedWindow) {
  const std::string other = m_folder.File("Configuration on web", "another file");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(other).parent_path());
  const auto doc = Connected();
  doc->AddApplication("a");
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE));
  std::filesystem::current_path(before);
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
  EXPECT_EQ(ReadAll(other), "another file");
}

}  // namespace
