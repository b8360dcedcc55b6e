// A notes file reads back as it was written, and whatever else has its name is refused and kept.
#include "notes/note_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>

#include "notes/new_notes.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

NoteFile SomeNotes() {
  NoteFile notes;
  notes.trace = {4711, {{64, 1}, {1024, ~std::uint64_t{0}}}};
  notes.rows = {{3, 0xABC, 9, ""}, {3, 0xABD, 0, "zwei\n\"Zeilen\" \xC3\xA9"}, {~0ull, 0, 1, "x"}};
  return notes;
}

std::string TextOf(NoteFile notes) {
  std::string text, why;
  EXPECT_TRUE(NotesText(notes, text, &why)) << why;
  return text;
}

std::string WhyNot(const std::string& text) {
  NoteFile notes = SomeNotes();
  std::string why;
  EXPECT_FALSE(ParseNotes(text, notes, &why)) << text;
  EXPECT_TRUE(notes == NoteFile()) << "what was read is left over";
  return why;
}

// A good file with a part replaced.
std::string With(const std::string& part, const std::string& other) {
  std::string text = TextOf(SomeNotes());
  const std::size_t at = text.find(part);
  EXPECT_NE(at, text.npos) << part;
  return text.replace(at, part.size(), other);
}

TEST(NoteFile, ReadsBackWhatItWrites) {
  NoteFile read;
  std::string why;
  ASSERT_TRUE(ParseNotes(TextOf(SomeNotes()), read, &why)) << why;
  EXPECT_TRUE(read == SomeNotes());
  ASSERT_TRUE(ParseNotes(TextOf({}), read, &why)) << why;
  EXPECT_TRUE(read == NoteFile());
}

TEST(NoteFile, RowsAreWrittenInTheirOrder) {
  NoteFile notes;
  notes.rows = {{9, 1, 1, ""}, {2, 5, 2, ""}, {2, 4, 3, ""}};
  NoteFile read;
  ASSERT_TRUE(ParseNotes(TextOf(notes), read, nullptr));
  EXPECT_THAT(read.rows, testing::ElementsAre(NotedRow{2, 4, 3, ""}, NotedRow{2, 5, 2, ""},
                                              NotedRow{9, 1, 1, ""}));
}

TEST(NoteFile, MembersOfALaterVersionAreWrittenAgain) {
  const std::string text =
      R"({"later":{"a":[1,-2,3.50,{"b":null}],"c":{}},"format":"tessera-notes","version":1,)"
      R"("trace":{"zone":"Z\u00e9","bytes":1,"heads":[]},"x":[],)"
      R"("rows":[{"who":["a",true],"row":1,"print":"00000000000000ff","mark":2,"at":7e5}]})";
  NoteFile notes, again;
  std::string why;
  ASSERT_TRUE(ParseNotes(text, notes, &why)) << why;
  EXPECT_EQ(notes.more, R"("later":{"a":[1,-2,3.50,{"b":null}],"c":{}},"x":[])");
  EXPECT_EQ(notes.moreOfTrace, "\"zone\":\"Z\xC3\xA9\"");
  EXPECT_EQ(notes.moreOfRows.at({1, 255}), R"("who":["a",true],"at":7e5)");
  ASSERT_TRUE(ParseNotes(TextOf(notes), again, &why)) << why << TextOf(notes);
  EXPECT_TRUE(again == notes);
}

TEST(NoteFile, WhatIsWrongIsRefusedWithAReason) {
  EXPECT_THAT(WhyNot(""), HasSubstr("no JSON"));
  EXPECT_THAT(WhyNot("{}"), HasSubstr("no notes file"));
  EXPECT_THAT(WhyNot("[]"), HasSubstr("no notes file"));
  EXPECT_THAT(WhyNot("7"), HasSubstr("no notes file"));
  EXPECT_THAT(WhyNot(TextOf(SomeNotes()) + "x"), HasSubstr("no JSON"));
  EXPECT_THAT(WhyNot(With("\"version\": 1", "\"version\": 2")), HasSubstr("another version: 2"));
  EXPECT_THAT(WhyNot(With("tessera-notes", "other-notes")), HasSubstr("no notes file"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": 10")), HasSubstr("no mark is 10"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": 0")), HasSubstr("no mark is 0"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": 257")), HasSubstr("no mark is 257"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": -1")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": 9.0")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": \"9\"")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("\"mark\": 9", "\"mark\": [9]")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("\"row\": 3", "\"row\": 18446744073709551616")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("\"row\": 3", "\"row\": 3, \"row\": 3")), HasSubstr("\"row\" twice"));
  EXPECT_THAT(WhyNot(With("\"row\": 3", "\"a\": 3, \"a\": 3")), HasSubstr("\"a\" twice"));
  EXPECT_THAT(WhyNot(With("\"row\": 3,", "")), HasSubstr("without its number"));
  EXPECT_THAT(WhyNot(With("abd", "abc")), HasSubstr("one row twice"));
  EXPECT_THAT(WhyNot(With("0000000000000abd", "0xabd")), HasSubstr("hexadecimal"));
  EXPECT_THAT(WhyNot(With("0000000000000abd", "0000000000000abg")), HasSubstr("hexadecimal"));
  EXPECT_THAT(WhyNot(With("zwei", "\xFF")), HasSubstr("no JSON"));
  EXPECT_THAT(WhyNot(With("[64, \"0000000000000001\"]", "[64]")), HasSubstr("wrong kind"));
  EXPECT_THAT(WhyNot(With("[64, ", "[64, 64, ")), HasSubstr("wrong kind"));
}

TEST(NoteFile, WhatIsDeepOrManyIsRefusedBeforeItTakesRoom) {
  const auto with = [](const std::string& value) {
    return With("\"version\": 1", "\"version\": 1, \"x\": " + value);
  };
  const std::string deep = std::string(1'000'000, '[') + std::string(1'000'000, ']');
  EXPECT_THAT(WhyNot(with(deep)), HasSubstr("too deep"));
  std::string many = "[0";
  for (std::size_t i = 0; i <= kUnknownNotesMax; ++i) many += ",0";
  EXPECT_THAT(WhyNot(with(many + "]")), HasSubstr("too much"));
  NoteFile notes;
  EXPECT_TRUE(ParseNotes(with(std::string(30, '[') + std::string(30, ']')), notes, nullptr));
}

TEST(NoteFile, ATextThatIsCutAnywhereIsRefused) {
  const std::string text = TextOf(SomeNotes());
  for (std::size_t bytes = 0; bytes + 2 < text.size(); ++bytes) WhyNot(text.substr(0, bytes));
}

TEST(NoteFile, ANoteThatIsNoUtf8IsWrittenAsOneThatCanBeRead) {
  NoteFile notes, read;
  notes.rows = {{1, 1, 0, "a\xFF"}};
  ASSERT_TRUE(ParseNotes(TextOf(notes), read, nullptr));
  EXPECT_EQ(read.rows.at(0).note, "a\xEF\xBF\xBD");
}

class NotesOnDisk : public testing::Test {
 protected:
  NotesRead Read() { return ReadNotes(m_path, m_notes, &m_why); }

  TempDir m_dir;
  const std::string m_trace = m_dir.File("a.trc", "trace"), m_path = NotesPath(m_trace);
  NoteFile m_notes;
  std::string m_why;
};

TEST_F(NotesOnDisk, AFileThatIsNotThereIsNoFault) {
  EXPECT_EQ(Read(), NotesRead::Absent);
  EXPECT_EQ(m_why, "");
}

TEST_F(NotesOnDisk, ALinkAFolderAndAFifoAreNotRead) {
  const std::string good = m_dir.File("good", TextOf(SomeNotes()));
  ASSERT_EQ(symlink(good.c_str(), m_path.c_str()), 0);
  EXPECT_EQ(Read(), NotesRead::Unreadable);
  EXPECT_THAT(m_why, HasSubstr("symbolic link"));
  EXPECT_THAT(m_why, HasSubstr(m_path));
  EXPECT_FALSE(ReplaceNotes(m_path, m_trace, "new", &m_why));
  EXPECT_THAT(m_why, HasSubstr("symbolic link"));
  EXPECT_EQ(ReadAll(good), TextOf(SomeNotes())) << "written through the link";
  ASSERT_EQ(unlink(m_path.c_str()), 0);
  ASSERT_EQ(mkdir(m_path.c_str(), 0700), 0);
  EXPECT_EQ(Read(), NotesRead::Unreadable);
  EXPECT_FALSE(ReplaceNotes(m_path, m_trace, "new", &m_why));
  ASSERT_EQ(rmdir(m_path.c_str()), 0);
  ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
  EXPECT_EQ(Read(), NotesRead::Unreadable) << "and does not wait for a writer";
}

TEST_F(NotesOnDisk, AFileThatIsTooLargeIsNotRead) {
  m_dir.File("a.trc.notes", "{");
  ASSERT_EQ(truncate(m_path.c_str(), static_cast<off_t>(kNotesBytesMax) + 1), 0);
  EXPECT_EQ(Read(), NotesRead::Unreadable);
  EXPECT_THAT(m_why, HasSubstr("larger than 128 MiB"));
}

}  // namespace
