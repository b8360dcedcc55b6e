// Recorded paths, located files, and what is learned of the difference.
#include "listview/source/source_map.h"

#include <gtest/gtest.h>

#include <utility>

#include "listview/source/locate_wait.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

class SourceMap : public testing::Test {
 protected:
  SourceMap() { g_sourceMap.clear(); }
  ~SourceMap() override { g_sourceMap.clear(); }

  // "c:\build\ -> d:\work\": the mappings there are.
  static std::string Map() {
    std::string all;
    for (const SourcePathMapping& mapping : g_sourceMap)
      all += mapping.recordedPrefix + " -> " + mapping.localPrefix + "\n";
    return all;
  }
  // The mappings that the two paths teach.
  std::string Learned(const std::string& recorded, const std::string& located) {
    g_sourceMap.clear();
    EXPECT_TRUE(LearnPathMapping(m_host, recorded, located));
    EXPECT_EQ(m_host.Reported(), "");
    return Map();
  }
  std::string MakeFile(const std::string& name) {
    const std::string path = m_directory.File(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    return m_directory.File(name, "int a;\n");
  }

  TempDir m_directory;
  RecordingHost m_host;
};

TEST_F(SourceMap, StartsEmptyAndFindsNothing) {
  EXPECT_TRUE(g_sourceMap.empty());
  EXPECT_EQ(FindMappedPath("/build/a.c"), "");
}

TEST_F(SourceMap, LearnsTheLeadingPartsThatDiffer) {
  EXPECT_EQ(Learned("c:\\build\\src\\a.c", "d:\\work\\src\\a.c"), "c:\\build\\ -> d:\\work\\\n");
}

TEST_F(SourceMap, LearnsFromTheFileNameAloneWhenTheFoldersDiffer) {
  EXPECT_EQ(Learned("/build/a.c", "/home/u/local/a.c"), "/build/ -> /home/u/local/\n");
}

TEST_F(SourceMap, AFileInTheRootIsLearnedWithTheRootAsItsPlace) {
  EXPECT_EQ(Learned("/build/src/a.c", "/src/a.c"), "");  // the located path is used up
  EXPECT_EQ(Learned("/build/lib/a.c", "/src/a.c"), "/build/lib/ -> /src/\n");
}

TEST_F(SourceMap, TailsCompareWithoutRegardToCase) {
  EXPECT_EQ(Learned("/BUILD/Src/A.C", "/local/src/a.c"), "/BUILD/ -> /local/\n");
}

TEST_F(SourceMap, ABackslashEqualsASlashInTheTails) {
  EXPECT_EQ(Learned("c:\\build\\src\\a.c", "/home/u/src/a.c"), "c:\\build\\ -> /home/u/\n");
}

TEST_F(SourceMap, AColonIsASeparatorOfItsOwnKind) {
  EXPECT_EQ(Learned("c:a.c", "/home/c:a.c"), "c: -> /home/c:\n");
  EXPECT_EQ(Learned("c:\\b\\a.c", "/mnt/c/b/a.c"), "c:\\ -> /mnt/c/\n");
}

TEST_F(SourceMap, TheSamePathTeachesNothing) {
  EXPECT_EQ(Learned("/build/src/a.c", "/build/src/a.c"), "");
  EXPECT_EQ(Learned("/build/src/a.c", "/Build/SRC/a.c"), "");
  EXPECT_EQ(Learned("c:\\src\\a.c", "c:\\src\\a.c"), "");
  EXPECT_EQ(Learned("src/a.c", "src/a.c"), "");
}

TEST_F(SourceMap, ARecordedPathThatIsATailOfTheLocatedOneTeachesNothing) {
  EXPECT_EQ(Learned("/src/a.c", "/home/u/src/a.c"), "");
}

TEST_F(SourceMap, ARelativePathIsLearnedByItsFirstFolder) {
  EXPECT_EQ(Learned("src/a.c", "/home/u/src/a.c"), "src/ -> /home/u/src/\n");
}

TEST_F(SourceMap, AnEmptyPathTeachesNothing) {
  EXPECT_EQ(Learned("", "/a.c"), "");
  EXPECT_EQ(Learned("/a.c", ""), "");
  EXPECT_EQ(Learned("", ""), "");
}

TEST_F(SourceMap, APathWithoutASeparatorEndsTheComparisonAtItsStart) {
  EXPECT_EQ(Learned("a.c", "/home/u/a.c"), "");
  EXPECT_EQ(Learned("a.c", "/home/u/other.c"), "");
  EXPECT_EQ(Learned("/build/a.c", "a.c"), "");
}

TEST_F(SourceMap, APathOfSeparatorsOnlyComesToAnEnd) {
  EXPECT_EQ(Learned(std::string(65535, '/'), std::string(4096, '/')), "");
  EXPECT_EQ(Learned("/", "/"), "");
  EXPECT_EQ(Learned(":\\/", "///"), ":\\ -> //\n");
}

TEST_F(SourceMap, ABareNameNextToASlashIsComparedWithinBounds) {
  EXPECT_EQ(Learned("x/", "/"), "");
  EXPECT_EQ(Learned("/x", "y/x"), "");
}

TEST_F(SourceMap, EachLocatedFileAddsAtTheEndAlsoWhatIsThereAlready) {
  EXPECT_TRUE(LearnPathMapping(m_host, "/one/a.c", "/x/a.c"));
  EXPECT_TRUE(LearnPathMapping(m_host, "/two/a.c", "/y/a.c"));
  EXPECT_TRUE(LearnPathMapping(m_host, "/one/a.c", "/x/a.c"));
  EXPECT_EQ(Map(), "/one/ -> /x/\n/two/ -> /y/\n/one/ -> /x/\n");
}

TEST_F(SourceMap, AFileOfAnotherNameWaitsUntilTheUserCancelsAndTeachesNothing) {
  bool asked = false;
  m_host.AnswerDialog([&](CDialog& dialog) {
    asked = dynamic_cast<LocateWait*>(&dialog) != nullptr;
    const auto& wait = static_cast<LocateWait&>(dialog);
    EXPECT_EQ(wait.m_recorded, "c:\\build\\a.c");
    EXPECT_EQ(wait.m_located, "/local/b.c");
    EXPECT_TRUE(wait.Reason().ends_with("choose the file that is named a.c."));
    dialog.OnOK();
    EXPECT_FALSE(dialog.Ended());
    dialog.OnCancel();
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_FALSE(LearnPathMapping(m_host, "c:\\build\\a.c", "/local/b.c"));
  EXPECT_TRUE(asked);
  EXPECT_EQ(Map(), "");
}

TEST_F(SourceMap, AWaitThatStandsIsCancelledFromOutside) {
  EXPECT_FALSE(LocateWait::CancelStanding());
  m_host.AnswerDialog([](CDialog& dialog) {
    EXPECT_TRUE(LocateWait::CancelStanding());
    EXPECT_EQ(dialog.Result(), CDialog::kIdCancel);
  });
  EXPECT_FALSE(LearnPathMapping(m_host, "/build/a.c", "/local/b.c"));
  EXPECT_FALSE(LocateWait::CancelStanding());
}

TEST_F(SourceMap, AnotherFileUnderTheSamePrefixIsFound) {
  const std::string local = MakeFile("src/b.c");
  g_sourceMap = {{"/build/", m_directory.Path() + "/"}};
  EXPECT_EQ(FindMappedPath("/build/src/b.c"), local);
}

TEST_F(SourceMap, PrefixesCompareWithoutRegardToCase) {
  const std::string local = MakeFile("src/b.c");
  g_sourceMap = {{"C:\\Build\\", m_directory.Path() + "/"}};
  EXPECT_EQ(FindMappedPath("c:\\BUILD\\src/b.c"), local);
}

TEST_F(SourceMap, TheRestIsTriedWithSlashesToo) {
  const std::string local = MakeFile("src/b.c");
  g_sourceMap = {{"c:\\build\\", m_directory.Path() + "/"}};
  EXPECT_EQ(FindMappedPath("c:\\build\\src\\b.c"), local);
}

TEST_F(SourceMap, AFileWhoseNameHasABackslashIsPreferred) {
  const std::string local = MakeFile("src\\b.c");
  MakeFile("src/b.c");
  g_sourceMap = {{"c:\\build\\", m_directory.Path() + "/"}};
  EXPECT_EQ(FindMappedPath("c:\\build\\src\\b.c"), local);
}

TEST_F(SourceMap, AMappingWhoseFileIsMissingDoesNotStopTheSearch) {
  const std::string local = MakeFile("second/b.c");
  g_sourceMap = {{"/build/", m_directory.File("first/")}, {"/build/", m_directory.File("second/")}};
  EXPECT_EQ(FindMappedPath("/build/b.c"), local);
}

TEST_F(SourceMap, TheFirstMappingThatFitsWins) {
  const std::string first = MakeFile("first/b.c");
  MakeFile("second/b.c");
  g_sourceMap = {{"/build/", m_directory.File("first/")}, {"/build/", m_directory.File("second/")}};
  EXPECT_EQ(FindMappedPath("/build/b.c"), first);
}

TEST_F(SourceMap, APathShorterThanAPrefixDoesNotFit) {
  g_sourceMap = {{"/build/", m_directory.Path() + "/"}};
  EXPECT_EQ(FindMappedPath("/bui"), "");
  EXPECT_EQ(FindMappedPath(""), "");
}

TEST_F(SourceMap, AMappedFileIsNotAskedFor) {
  const std::string local = MakeFile("a.c");
  g_sourceMap = {{"/build/", m_directory.Path() + "/"}};
  EXPECT_EQ(ResolveSourcePath(m_host, "/build/a.c"), local);
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(SourceMap, TheUserIsAskedWithTheRecordedPathAsTheName) {
  EXPECT_EQ(ResolveSourcePath(m_host, "c:\\build\\a.c"), "");
  EXPECT_EQ(m_host.Reported(),
            "open dialog \"Locate source file\" ext= name=\"c:\\build\\a.c\" "
            "filters=\"Source Files (*.c;*.cpp;*.cxx)|*.c; *.cpp; *.cxx|Header Files "
            "(*.h;*.hxx)|*.h; *.hxx|All Files (*.*)|*\" -> none\n");
  EXPECT_EQ(Map(), "");
}

TEST_F(SourceMap, TheQuestionShowsTheWholeRecordedPath) {
  EXPECT_EQ(ResolveSourcePath(m_host, "/build/src/a.c"), "");
  ASSERT_EQ(m_host.m_fileRequests.size(), 1u);
  EXPECT_EQ(m_host.m_fileRequests[0].note.label, "Recorded path:");
  EXPECT_EQ(m_host.m_fileRequests[0].note.text, "/build/src/a.c");
}

TEST_F(SourceMap, TheLocatedFileIsUsedAndItsPlaceIsLearned) {
  const std::string local = MakeFile("src/a.c");
  m_host.AnswerFileDialog(local);
  EXPECT_EQ(ResolveSourcePath(m_host, "/build/src/a.c"), local);
  EXPECT_EQ(Map(), "/build/ -> " + m_directory.Path() + "/\n");
}

TEST_F(SourceMap, AMappingWhoseFileIsMissingBringsTheDialogUpAgain) {
  g_sourceMap = {{"/build/", m_directory.Path() + "/"}};
  const std::string local = MakeFile("elsewhere/a.c");
  m_host.AnswerFileDialog(local);
  EXPECT_EQ(ResolveSourcePath(m_host, "/build/a.c"), local);
  EXPECT_EQ(g_sourceMap.size(), 2u);
}

TEST_F(SourceMap, ALocatedFileOfAnotherNameIsLikeACancelledDialog) {
  m_host.AnswerFileDialog(MakeFile("b.c"));
  EXPECT_EQ(ResolveSourcePath(m_host, "/build/a.c"), "");
  EXPECT_EQ(Map(), "");
  EXPECT_EQ(m_host.Transcript().back(), "dialog -> 2");
}

}  // namespace
