// Marks and notes of an open trace file: when they are saved, and what becomes of them when they
// cannot be.
#include "notes/kept/doc_notes.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "support/noted_file.h"

namespace {

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

class DocNotesTest : public testing::Test {
 protected:
  DocNotes& Notes() { return m_file.m_document.Notes(); }
  std::string NotesFile() const { return m_file.m_directory.File("web.trc.notes"); }
  std::string Written() const { return ReadIfThere(NotesFile()); }
  bool AsksFor(BoxAnswer answer) {
    m_file.m_host.ClearTranscript();
    m_file.m_host.AnswerBox(answer);
    return m_file.m_document.SaveModified();
  }
  std::string Said() const { return m_file.m_host.Reported(); }
  // Nothing can be saved then.
  void PutLinkThere() { fs::create_symlink("elsewhere", NotesFile()); }

  NotedFile m_file;
};

TEST_F(DocNotesTest, ManyChangesAreSavedOnceAndWithinASecond) {
  EXPECT_TRUE(Notes().Mark({0, 2}, 3));
  EXPECT_TRUE(Notes().SetNote(1, "why\nhere"));
  EXPECT_THAT(m_file.m_host.Timers(), testing::ElementsAre(DocNotes::kSaveAfterMs));
  EXPECT_EQ(Written(), "");
  m_file.m_host.TickTimers();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 3"));
  EXPECT_THAT(Written(), HasSubstr("\"note\": \"why\\nhere\""));
  EXPECT_THAT(m_file.m_host.Timers(), testing::IsEmpty()) << "nothing wakes up without a change";
  EXPECT_FALSE(Notes().IsUnsaved());
}

TEST_F(DocNotesTest, WhatIsNotSavedYetIsSavedAtTheEnd) {
  Notes().Mark({1}, 4);
  EXPECT_TRUE(m_file.m_document.SaveModified());
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 4"));
  Notes().Mark({1}, 5);
  m_file.m_document.DeleteContents();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 5")) << "also where nobody was asked";
}

TEST_F(DocNotesTest, AClearedWindowLeavesTheFileOfNotes) {
  Notes().Mark({1}, 4);
  m_file.m_document.DeleteContents();
  EXPECT_TRUE(Notes().Notes().empty());
  EXPECT_FALSE(Notes().IsOpen());
  EXPECT_FALSE(Notes().SetNote(0, "x"));
  m_file.m_document.DeleteContents();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 4"));
}

TEST_F(DocNotesTest, ASaveThatFailsIsToldOnceAndAskedAboutAtTheEnd) {
  Notes().Mark({1}, 4);
  PutLinkThere();
  for (int turn = 0; turn < 2; ++turn) {
    m_file.m_host.ClearTranscript();
    m_file.m_host.TickTimers();
    EXPECT_EQ(Said().find("web.trc.notes: a symbolic link") != std::string::npos, turn == 0);
    Notes().Mark({0}, 2);
  }
  EXPECT_EQ(Notes().Notes().size(), 2u) << "in memory they stay";
  EXPECT_FALSE(AsksFor(BoxAnswer::No));
  EXPECT_THAT(Said(), HasSubstr("Close the window without them?"));
  EXPECT_TRUE(Notes().IsUnsaved());
  fs::remove(NotesFile());
  m_file.m_host.TickTimers();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 2")) << "it is tried again";
}

TEST_F(DocNotesTest, WhoWantsThemLostLosesThem) {
  Notes().Mark({1}, 4);
  PutLinkThere();
  EXPECT_TRUE(AsksFor(BoxAnswer::Yes));
  fs::remove(NotesFile());
  m_file.m_document.DeleteContents();
  EXPECT_EQ(Written(), "");
}

TEST_F(DocNotesTest, TheUserDecidesWhetherThoseOfAnotherTraceFileAreReplaced) {
  m_file.m_directory.File("web.trc.notes",
                          R"({"format": "tessera-notes", "version": 1,
          "trace": {"bytes": 99, "heads": [[64, "0000000000000001"]]},
          "rows": [{"row": 0, "print": "0000000000000001", "mark": 9}]})");
  const std::string before = Written();
  EXPECT_TRUE(Notes().IsOfAnother());
  ASSERT_EQ(Notes().Others().size(), 1u);
  Notes().Mark({0}, 2);
  m_file.m_host.TickTimers();
  EXPECT_EQ(Written(), before);
  EXPECT_FALSE(AsksFor(BoxAnswer::Cancel));
  EXPECT_EQ(Written(), before);
  EXPECT_TRUE(AsksFor(BoxAnswer::No));
  EXPECT_EQ(Written(), before);
  Notes().Mark({0}, 3);
  EXPECT_TRUE(AsksFor(BoxAnswer::Yes));
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 3"));
  EXPECT_THAT(Written(), Not(HasSubstr("\"mark\": 9")));
}

TEST_F(DocNotesTest, AFileThatIsNotTheOneWhichWasOpenedGetsNone) {
  const std::string path = m_file.m_directory.File("web.trc");
  Notes().Mark({1}, 4);
  fs::rename(path, m_file.m_directory.File("old.trc"));
  m_file.m_host.TickTimers();
  EXPECT_THAT(Said(), HasSubstr("web.trc: No such file"));
  TrcImage().Trace("another").WriteTo(path);
  EXPECT_FALSE(AsksFor(BoxAnswer::No));
  EXPECT_THAT(Said(), HasSubstr("another file has this name now"));
  EXPECT_EQ(Written(), "");
}

TEST_F(DocNotesTest, AFileThatWasCutMeanwhileGetsNone) {
  Notes().Mark({2}, 4);
  fs::resize_file(m_file.m_directory.File("web.trc"), 60);
  EXPECT_FALSE(AsksFor(BoxAnswer::No));
  EXPECT_THAT(Said(), HasSubstr("has become shorter"));
  EXPECT_EQ(Written(), "");
}

TEST_F(DocNotesTest, AFileThatGrewGetsThem) {
  Notes().Mark({2}, 4);
  std::ofstream(m_file.m_directory.File("web.trc"), std::ios::app) << "more";
  m_file.m_host.TickTimers();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 4"));
}

TEST_F(DocNotesTest, WhatAnotherProgramWritesIsReadBeforeTheNextChange) {
  EXPECT_TRUE(Notes().Notes().empty());
  m_file.Mark(0, 7);
  Notes().SetNote(2, "mine");
  EXPECT_EQ(Notes().Notes().size(), 2u);
  m_file.m_host.TickTimers();
  EXPECT_THAT(Written(), HasSubstr("\"mark\": 7"));
  EXPECT_THAT(Written(), HasSubstr("mine"));
}

TEST_F(DocNotesTest, RemovedOnesAreGoneFromTheFileToo) {
  Notes().Mark({0, 1, 2}, 1);
  Notes().SetNote(1, "note");
  m_file.m_host.TickTimers();
  Notes().Remove({1, 2});
  m_file.m_host.TickTimers();
  EXPECT_EQ(Notes().Notes().size(), 1u);
  EXPECT_THAT(Written(), Not(HasSubstr("note\"")));
}

TEST_F(DocNotesTest, ThereIsABound) {
  std::vector<std::uint64_t> many(DocNotes::kMost + 1, 0);
  EXPECT_FALSE(Notes().Mark(many, 1));
  EXPECT_THAT(Said(), HasSubstr("At most 1,000,000 traces"));
  EXPECT_TRUE(Notes().Notes().empty());
}

TEST_F(DocNotesTest, AProgramThatOnlyReadsTheTracesReadsNoNotes) {
  EXPECT_FALSE(static_cast<CTraceDoc&>(m_file.m_document).IsModified());
  m_file.m_document.DeleteContents();
  EXPECT_FALSE(Notes().IsOpen());
}

// A window that marks all traces in the next colour and saves them, again and again.
[[noreturn]] void MarkForEver(const std::string& path) {
  RecordingHost host;
  CTraceFileDoc document(host);
  document.OnOpenDocument(path);
  document.SetPathName(path, false);
  host.RunUntil([&document] { return !document.m_loading; });
  std::vector<std::uint64_t> all(document.m_traces.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  for (unsigned turn = 0;; ++turn) {
    document.Notes().Mark(all, static_cast<std::uint8_t>(turn % kMarkColours + 1));
    host.TickTimers();
  }
}

TEST(KilledWindow, LeavesTheMarksOfOneSaveWhole) {
  constexpr std::size_t kTraces = 5000;
  const TempDir dir;
  TrcImage image;
  for (std::size_t i = 0; i < kTraces; ++i) image.Trace("t" + std::to_string(i));
  const std::string path = image.WriteTo(dir.File("web.trc"));
  std::mt19937 random(20261123);
  int found = 0;
  for (int round = 0; round < 25; ++round) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) MarkForEver(path);
    usleep(10'000 + random() % 60'000);
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "it was still at work";
    NoteFile notes;
    std::string why;
    const NotesRead read = ReadNotes(NotesPath(path), notes, &why);
    ASSERT_NE(read, NotesRead::Unreadable) << why;
    if (read == NotesRead::Absent) continue;
    ++found;
    ASSERT_EQ(notes.rows.size(), kTraces);
    for (const NotedRow& row : notes.rows) ASSERT_EQ(row.colour, notes.rows[0].colour);
  }
  EXPECT_GT(found, 3) << "no save came to its end: wait longer";
}

}  // namespace
