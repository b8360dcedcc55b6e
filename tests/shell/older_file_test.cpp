// A trace file of the older format, opened in each of the ways in which the program opens files.
#include "shell_fixture.h"
#include "support/old_trc_image.h"

namespace {

constexpr char kQuestion[] =
    "box Tessera [stop] \"This trace file was created by an older version of Tessera.  Do you want "
    "to convert it?\" (Yes, No) -> ";

class OlderFileTest : public ShellTest {
 protected:
  std::string OldFile(const std::string& name = "old.trc") {
    return OldTrcImage().Trace("up").Trace("down").WriteTo(m_dir.File(name));
  }
  std::size_t Asked() const {
    std::size_t asked = 0;
    for (const std::string& line : m_host.Transcript()) asked += line.rfind(kQuestion, 0) == 0;
    return asked;
  }
  bool ShowsTwoRows() {
    return m_host.RunUntil([this] { return Face().m_panes[kPaneRowCount] == "2"; });
  }
};

TEST_F(OlderFileTest, FileOpenAsksAndOpensTheConvertedFile) {
  Start();
  const std::string path = OldFile();
  m_host.AnswerFileDialog(path);
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnCommand(ID_FILE_OPEN);
  EXPECT_EQ(Asked(), 1U);
  EXPECT_TRUE(ShowsTwoRows());
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path});
}

TEST_F(OlderFileTest, NoAtFileOpenLeavesTheProgramAsItWas) {
  Start();
  m_host.AnswerFileDialog(OldFile());
  m_host.AnswerBox(BoxAnswer::No);
  Frame().OnCommand(ID_FILE_OPEN);
  EXPECT_EQ(Asked(), 1U);
  m_host.RunPosted();
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_FALSE(Frame().LoadStatus());
  EXPECT_TRUE(m_app->RecentFiles().empty());
}

TEST_F(OlderFileTest, NoLeavesTheFileAmongTheRecentOnes) {
  Start();
  const std::string path = OldFile();
  m_app->AddToRecentFileList(path);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_FALSE(m_app->OpenDocumentFile(path));
  EXPECT_EQ(Asked(), 1U);
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path});
}

TEST_F(OlderFileTest, WhatAConversionLosesIsToldWhileTheFileIsInFront) {
  Start();
  m_host.AnswerBox(BoxAnswer::Yes);
  OldTrcImage image;
  image.Trace("up").Raw(77).Raw(77).Trace({.text = std::string(65536, 'x')}).Trace("down").Cut(2);
  ASSERT_TRUE(m_app->OpenDocumentFile(image.WriteTo(m_dir.File("old.trc"))));
  ASSERT_TRUE(m_host.RunUntil([this] { return Face().m_panes[kPaneRowCount] == "3"; }));
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage],
            "before the conversion damaged: 2 bytes skipped, last record cut, before the "
            "conversion 1 text was cut: a trace file holds 65535 bytes of each");
  EXPECT_NE(Face().m_paneTips[kPaneMessage].find("2 bytes skipped from byte 62 on"),
            std::string::npos)
      << Face().m_paneTips[kPaneMessage];
}

TEST_F(OlderFileTest, ADropAsksForEachOlderFileAndOpensTheOthers) {
  Start();
  m_host.AnswerBox(BoxAnswer::No);
  m_host.AnswerBox(BoxAnswer::Yes);
  const std::string current = WriteTraces("web.trc", 5);
  Frame().OnDropFiles({OldFile("one.trc"), current, OldFile("two.trc")});
  EXPECT_EQ(Asked(), 2U);
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "web.trc");
  EXPECT_EQ(Frame().Children()[1]->Title(), "two.trc");
  EXPECT_TRUE(ShowsTwoRows());
}

TEST_F(OlderFileTest, AFileOnTheCommandLineIsAskedForBeforeTheWindowShows) {
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(m_app->InitInstance({OldFile()}));
  EXPECT_EQ(Asked(), 1U);
  EXPECT_TRUE(ShowsTwoRows());
}

TEST_F(OlderFileTest, NoToAFileOnTheCommandLineEndsTheProgramQuietly) {
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_FALSE(m_app->InitInstance({OldFile()}));
  EXPECT_EQ(Asked(), 1U);
  EXPECT_FALSE(Face().m_shown);
}

TEST_F(OlderFileTest, OneProgressBoxServesTheConversionAndTheLoad) {
  Start();
  OldTrcImage image;
  for (int i = 0; i < 3000; ++i) image.Trace("up");
  m_host.AnswerBox(BoxAnswer::Yes);
  auto* document =
      static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(image.WriteTo(m_dir.File("old.trc"))));
  ASSERT_TRUE(document);
  std::vector<std::string> captions;
  CLoadStatus* box = nullptr;
  bool another = false;
  ASSERT_TRUE(m_host.RunUntil([&] {
    if (CLoadStatus* const now = Frame().LoadStatus()) {
      another = another || (box && box != now);
      box = now;
      if (captions.empty() || captions.back() != now->m_caption) captions.push_back(now->m_caption);
    }
    return !document->m_loading;
  }));
  EXPECT_EQ(captions, (std::vector<std::string>{"Converting...", "Loading..."}));
  EXPECT_FALSE(another);
  EXPECT_FALSE(Frame().LoadStatus());
}

TEST_F(OlderFileTest, AFailedConversionLeavesItsBoxUntilAnotherLoadIsDone) {
  Start();
  const std::string path = OldFile();
  std::filesystem::create_directory(path + ".tmp");
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(m_app->OpenDocumentFile(path));
  ASSERT_TRUE(m_host.RunUntil([this] {
    m_host.ClosePostedBoxes();
    return m_host.Reported().find("Error opening trace file") != std::string::npos;
  }));
  m_host.RunPosted();
  ASSERT_TRUE(Frame().LoadStatus());
  EXPECT_EQ(Frame().LoadStatus()->m_caption, "Converting...");
  Frame().LoadStatus()->OnCancel();
  m_host.RunPosted();
  EXPECT_TRUE(Frame().LoadStatus());
  Open(WriteTraces("web.trc", 5));
  EXPECT_FALSE(Frame().LoadStatus());
}

}  // namespace
