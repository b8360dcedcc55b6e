// Marks and notes are found again where they belong, and nowhere else.
#include "notes/file_notes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <random>

#include "notes/noted_file.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

bool Never(const std::string&) {
  return false;
}

class FileNotesTest : public testing::Test {
 protected:
  // A file of `count` traces that has marks at rows 1 and 8, and a note at row 5.
  void Noted(std::size_t count = 10) {
    m_dir.File("a.trc", TrcOf(Texts("a", count)));
    NotedFile file(m_path);
    ASSERT_TRUE(file.Mark(1, 3).Note(5, "here").Mark(8, 9).Save()) << file.why;
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("a.trc"), m_notes = NotesPath(m_path);
};

TEST_F(FileNotesTest, AFileWithoutNotesHasNone) {
  m_dir.File("a.trc", TrcOf({"x"}));
  const NotedFile file(m_path);
  EXPECT_TRUE(file.WasRead());
  EXPECT_EQ(file.Said(), "");
  EXPECT_FALSE(file.notes.IsModified());
}

TEST_F(FileNotesTest, ComeBackWhenTheFileIsOpenedAgain) {
  Noted();
  const std::string before = ReadAll(m_path);
  NotedFile again(m_path);
  EXPECT_EQ(again.Said(), "1:3 5:0:here 8:9");
  EXPECT_EQ(again.Applied(), again.Said());
  EXPECT_FALSE(again.notes.IsModified());
  again.Mark(1, 0).Note(5, "").Mark(2, 1);
  EXPECT_TRUE(again.notes.IsModified());
  ASSERT_TRUE(again.Save());
  EXPECT_FALSE(again.notes.IsModified());
  EXPECT_EQ(NotedFile(m_path).Said(), "2:1 8:9");
  EXPECT_EQ(ReadAll(m_path), before) << "the trace file was written";
}

TEST_F(FileNotesTest, AreFoundWhenBothFilesWereMoved) {
  Noted();
  fs::create_directory(m_dir.File("other"));
  const std::string moved = m_dir.File("other/b.trc");
  fs::rename(m_path, moved);
  fs::rename(m_notes, NotesPath(moved));
  EXPECT_EQ(NotedFile(moved).Applied(), "1:3 5:0:here 8:9");
}

TEST_F(FileNotesTest, StayInACaptureThatGrows) {
  Noted();
  m_dir.File("a.trc", TrcOf(Texts("a", 3000)));
  NotedFile grown(m_path);
  EXPECT_EQ(grown.Said(), "1:3 5:0:here 8:9");
  ASSERT_TRUE(grown.Mark(2999, 4).Save());
  EXPECT_EQ(NotedFile(m_path).Said(), "1:3 5:0:here 8:9 2999:4");
}

TEST_F(FileNotesTest, ACutFileKeepsThoseOfWhatIsLeftAtEveryLength) {
  Noted();
  const std::string whole = TrcOf(Texts("a", 10));
  std::vector<std::size_t> ends;  // of each trace
  for (std::size_t i = 0; i < 10; ++i) ends.push_back(TrcOf(Texts("a", i + 1)).size());
  for (std::size_t bytes = 17; bytes < whole.size(); ++bytes) {
    m_dir.File("a.trc", whole.substr(0, bytes));
    const auto place = [&](std::size_t row) { return ends[row] <= bytes ? "" : ">"; };
    const NotedFile cut(m_path);
    EXPECT_EQ(cut.Said(),
              std::string(place(1)) + "1:3 " + place(5) + "5:0:here " + place(8) + "8:9")
        << bytes << " bytes";
  }
}

TEST_F(FileNotesTest, WhatIsBeyondTheEndIsWrittenAgainAndAppliesWhenTheFileIsWholeAgain) {
  Noted();
  const std::string whole = TrcOf(Texts("a", 10));
  m_dir.File("a.trc", TrcOf(Texts("a", 4)));
  {
    NotedFile cut(m_path);
    EXPECT_EQ(cut.Said(), "1:3 >5:0:here >8:9");
    EXPECT_EQ(cut.Applied(), "1:3");
    ASSERT_TRUE(cut.Mark(3, 7).Save()) << cut.why;
    EXPECT_EQ(cut.Said(), "1:3 3:7 >5:0:here >8:9");
  }
  m_dir.File("a.trc", whole);
  EXPECT_EQ(NotedFile(m_path).Applied(), "1:3 3:7 5:0:here 8:9");
  // Other traces came behind the cut.
  std::vector<std::string> texts = Texts("a", 4);
  for (const std::string& text : Texts("b", 6)) texts.push_back(text);
  m_dir.File("a.trc", TrcOf(texts));
  EXPECT_EQ(NotedFile(m_path).Said(), "1:3 3:7 !5:0:here !8:9");
}

TEST_F(FileNotesTest, AnotherFileOfTheNameHasThemAsStaleAndDoesNotReplaceThemUnasked) {
  Noted();
  const std::string kept = ReadAll(m_notes);
  m_dir.File("a.trc", TrcOf(Texts("z", 2000)));
  NotedFile other(m_path);
  EXPECT_TRUE(other.notes.IsOfAnother());
  EXPECT_EQ(other.Said(), "!1:3 !5:0:here !8:9");
  EXPECT_EQ(other.Applied(), "");
  other.Mark(0, 2);
  EXPECT_FALSE(other.Save());
  EXPECT_EQ(other.why, m_notes + ": has the notes of another trace file");
  EXPECT_EQ(ReadAll(m_notes), kept);
  ASSERT_TRUE(other.Save(true)) << other.why;
  EXPECT_EQ(NotedFile(m_path).Said(), "0:2");
}

TEST_F(FileNotesTest, ATraceThatOnlyHasTheSamePlaceGetsNone) {
  Noted(3000);
  std::vector<std::string> texts = Texts("a", 3000);
  texts[2000] = "A 2000";
  {
    NotedFile file(m_path);
    ASSERT_TRUE(file.Mark(2000, 1).Mark(2500, 2).Save());
  }
  m_dir.File("a.trc", TrcOf(texts));
  NotedFile changed(m_path);
  EXPECT_FALSE(changed.notes.IsOfAnother()) << "its beginning is the same";
  EXPECT_EQ(changed.Said(), "1:3 5:0:here 8:9 !2000:1 2500:2");
  ASSERT_TRUE(changed.Mark(2000, 6).Save()) << changed.why;
  EXPECT_THAT(NotedFile(m_path).Said(), HasSubstr("2000:6")) << "beside the stale one";
  EXPECT_THAT(NotedFile(m_path).Said(), HasSubstr("!2000:1"));
}

TEST_F(FileNotesTest, ASmallFileThatWasCutAndGrewDifferentlyMeanwhileIsAnother) {
  Noted();
  std::vector<std::string> texts = Texts("a", 4);
  for (const std::string& text : Texts("b", 6)) texts.push_back(text);
  m_dir.File("a.trc", TrcOf(texts));
  EXPECT_EQ(NotedFile(m_path).Said(), "!1:3 !5:0:here !8:9");
}

TEST_F(FileNotesTest, AFileThatCannotBeReadIsNeverReplaced) {
  m_dir.File("a.trc", TrcOf(Texts("a", 3)));
  m_dir.File("a.trc.notes", "{\"format\": \"tessera-notes\", \"version\": 7}");
  NotedFile file(m_path);
  EXPECT_FALSE(file.WasRead());
  EXPECT_THAT(file.why, HasSubstr("another version: 7"));
  file.Mark(0, 1);
  for (const bool replace : {false, true}) {
    EXPECT_FALSE(file.Save(replace));
    EXPECT_THAT(file.why, HasSubstr("could not be read"));
  }
  EXPECT_EQ(ReadAll(m_notes), "{\"format\": \"tessera-notes\", \"version\": 7}");
  EXPECT_EQ(file.Said(), "0:1") << "in memory it stays";
}

TEST_F(FileNotesTest, WhatAnotherProgramHasWrittenMeanwhileIsNotLost) {
  Noted();
  NotedFile one(m_path), other(m_path);
  ASSERT_TRUE(other.Mark(2, 2).Save());
  one.Mark(3, 3);
  EXPECT_FALSE(one.Save());
  EXPECT_THAT(one.why, HasSubstr("another program has written it"));
  EXPECT_EQ(NotedFile(m_path).Said(), "1:3 2:2 5:0:here 8:9");
  ASSERT_EQ(unlink(m_notes.c_str()), 0);
  EXPECT_FALSE(other.Mark(2, 0).Save()) << "it was taken away";
  EXPECT_TRUE(one.Save(true));
  EXPECT_EQ(NotedFile(m_path).Said(), "1:3 3:3 5:0:here 8:9");
  EXPECT_TRUE(one.Mark(4, 4).Save()) << one.why << "a file of its own";
}

TEST_F(FileNotesTest, NewNotesAreNotWrittenOverThoseOfTheFileBefore) {
  Noted();
  std::string why;
  EXPECT_FALSE(SaveNewNotes(m_path, {{0, 1, 1, ""}}, Never, &why));
  EXPECT_THAT(why, HasSubstr("of the file before"));
  const std::string fresh = m_dir.File("b.trc", TrcOf(Texts("a", 3)));
  const NotedFile from(m_path);
  ASSERT_TRUE(SaveNewNotes(fresh, {{1, PrintOfRecord(from.Record(1)), 5, "x"}}, Never, &why))
      << why;
  EXPECT_EQ(NotedFile(fresh).Said(), "1:5:x");
}

TEST_F(FileNotesTest, RandomHistoriesNeverPutAMarkAtAnotherTrace) {
  std::mt19937 random(20261123);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (int round = 0; round < 40; ++round) {
    unlink(m_notes.c_str());
    std::vector<std::string> texts = Texts("t" + std::to_string(round), 1 + below(60));
    std::map<std::string, unsigned> marked;  // texts: each is unique
    for (int step = 0; step < 12; ++step) {
      m_dir.File("a.trc", TrcOf(texts));
      NotedFile file(m_path);
      ASSERT_TRUE(file.WasRead()) << file.why;
      std::string expected;
      for (std::size_t row = 0; row < texts.size(); ++row) {
        const auto mark = marked.find(texts[row] + "#" + std::to_string(row));
        if (mark != marked.end())
          expected += (expected.empty() ? "" : " ") + std::to_string(row) + ":" +
                      std::to_string(mark->second);
      }
      ASSERT_EQ(file.Applied(), expected) << "round " << round << ", step " << step;
      const std::size_t row = below(texts.size());
      const auto colour = static_cast<std::uint8_t>(1 + below(9));
      ASSERT_TRUE(file.Mark(row, colour).Save()) << file.why;
      marked[texts[row] + "#" + std::to_string(row)] = colour;
      // Cut, or grown by other traces.
      if (below(2))
        texts.resize(1 + below(texts.size()));
      else
        for (std::size_t more = below(20); more > 0; --more)
          texts.push_back("new " + std::to_string(random()));
    }
  }
}

}  // namespace
