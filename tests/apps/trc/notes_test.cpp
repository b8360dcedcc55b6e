// trc notes, and filter texts that ask for marks and notes.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class TrcNotes : public testing::Test {
 protected:
  std::string Traces(const std::string& name, std::initializer_list<const char*> texts) const {
    TrcImage image;
    for (const char* const text : texts) image.Trace(text);
    return image.WriteTo(m_dir.File(name));
  }
  TrcRun Notes(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"notes", m_path});
    return RunTrc(more);
  }
  std::vector<std::string> Texts(const std::string& where) const {
    std::vector<std::string> texts;
    for (const auto& trace : DumpedTraces(m_path, {"--where", where}))
      texts.push_back(trace.at("text"));
    return texts;
  }

  TempDir m_dir;
  const std::string m_path = Traces("a.trc", {"zero", "one", "two", "three", "four"});
};

TEST_F(TrcNotes, AFileWithoutNotesHasNone) {
  const TrcRun run = Notes();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_THAT(Texts("not marked and not note"), testing::SizeIs(5));
}

TEST_F(TrcNotes, ListsWhatItHasWrittenAndLeavesTheTraceFileAsItWas) {
  const std::string before = ReadAll(m_path);
  TrcRun run = Notes({"--mark", "1=3", "--mark=4=9", "-n", "4=a = b\nsecond line", "-n", "2=x"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadAll(m_path), before);
  run = Notes();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(LinesOf(run.out), ElementsAre("1: 3 one", "2: - two", "    x", "4: 9 four",
                                            "    a = b", "    second line"));
  const auto rows = JsonLinesOf(Notes({"--json"}).out);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], nlohmann::json::parse(R"({"index":1,"state":"here","mark":3,"text":"one"})"));
  EXPECT_EQ(rows[2].at("note"), "a = b\nsecond line");
  EXPECT_EQ(Notes({"--mark", "1=0", "--note", "2="}).status, 0);
  EXPECT_THAT(LinesOf(Notes().out), ElementsAre("4: 9 four", "    a = b", "    second line"));
}

TEST_F(TrcNotes, AFilterTextKnowsThem) {
  ASSERT_EQ(Notes({"-m", "1=3", "-m", "3=5", "-n", "3=slow here", "-n", "4=also slow"}).status, 0);
  EXPECT_THAT(Texts("marked"), ElementsAre("one", "three"));
  EXPECT_THAT(Texts("marked == 5"), ElementsAre("three"));
  EXPECT_THAT(Texts("marked != 5"), ElementsAre("zero", "one", "two", "four"));
  EXPECT_THAT(Texts("marked in {1..4} or note contains \"also\""), ElementsAre("one", "four"));
  EXPECT_THAT(Texts("note matches \"^slow\""), ElementsAre("three"));
  EXPECT_EQ(RunTrc({"find", "--total", "o", m_path, "--where", "note"}).out, "1\n");
  const std::string out = m_dir.File("marked.trc");
  EXPECT_EQ(RunTrc({"save", m_path, out, "--where", "marked"}).status, 0);
  EXPECT_THAT(DumpedTraces(out), testing::SizeIs(2));
}

TEST_F(TrcNotes, ThoseOfACutFileAreBeyondItsEndAndThoseOfAnotherFileStale) {
  ASSERT_EQ(Notes({"-m", "1=3", "-m", "4=5"}).status, 0);
  Traces("a.trc", {"zero", "one", "two"});
  EXPECT_THAT(LinesOf(Notes().out), ElementsAre("1: 3 one", "4: 5 (beyond the end)"));
  EXPECT_THAT(Texts("marked"), ElementsAre("one"));
  Traces("a.trc", {"other", "traces", "of", "another", "program", "here"});
  EXPECT_THAT(LinesOf(Notes().out), ElementsAre("1: 3 (stale)", "4: 5 (stale)"));
  const TrcRun asked = RunTrc({"dump", m_path, "--where", "marked"});
  EXPECT_THAT(LinesOf(asked.out), testing::SizeIs(1)) << "more than the headers";
  EXPECT_THAT(asked.err, HasSubstr("a.trc.notes: of another trace file, not applied"));
  const TrcRun refused = Notes({"-m", "0=1"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("another trace file; --replace"));
  EXPECT_EQ(JsonLinesOf(Notes({"--json"}).out).at(0).at("state"), "stale");
  EXPECT_EQ(Notes({"-m", "0=1", "--replace"}).status, 0);
  EXPECT_THAT(LinesOf(Notes().out), ElementsAre("0: 1 other"));
}

TEST_F(TrcNotes, APackedFileHasThemToo) {
  const std::string packed = m_path + ".gz";
  ASSERT_EQ(system(("gzip -k " + m_path).c_str()), 0);
  ASSERT_EQ(RunTrc({"notes", packed, "--mark", "2=2"}).status, 0);
  EXPECT_EQ(RunTrc({"notes", packed}).out, "2: 2 two\n");
  std::filesystem::rename(packed + ".notes", m_path + ".notes");
  EXPECT_EQ(Notes().out, "2: 2 two\n") << "its traces are the same";
}

TEST_F(TrcNotes, WrongUseIsSaid) {
  const auto wrong = [this](std::vector<std::string> more, const std::string& what) {
    const TrcRun run = Notes(std::move(more));
    EXPECT_EQ(run.status, 2) << what;
    EXPECT_THAT(run.err, HasSubstr(what));
  };
  wrong({"--mark", "5=1"}, "has no trace 5");
  wrong({"--mark", "1=10"}, "--mark");
  wrong({"--mark", "1"}, "needs the index");
  wrong({"--note", "x=1"}, "--note");
  EXPECT_FALSE(std::filesystem::exists(m_path + ".notes"));
  EXPECT_THAT(RunTrc({"notes", "-"}).err, HasSubstr("standard input"));
  m_dir.File("a.trc.notes", "no notes");
  wrong({}, "a.trc.notes: no JSON");
  wrong({"--mark", "1=1", "--replace"}, "a.trc.notes: no JSON");
  EXPECT_EQ(ReadAll(m_path + ".notes"), "no notes");
  const TrcRun dumped = RunTrc({"dump", m_path, "--where", "marked"});
  EXPECT_EQ(dumped.status, 2);
  EXPECT_EQ(RunTrc({"dump", m_path, "--where", "text == one"}).status, 0) << "not asked for them";
}

TEST_F(TrcNotes, OnlyASingleFileHasMarks) {
  const TrcRun both = RunTrc({"dump", m_path, Traces("b.trc", {"x"}), "--where", "marked"});
  EXPECT_EQ(both.status, 2);
  EXPECT_THAT(both.err, HasSubstr("need one file"));
  for (const std::vector<std::string>& live :
       {std::vector<std::string>{"dump", "--follow", m_path, "--where", "note"},
        std::vector<std::string>{"tail", "--where", "marked == 1"}}) {
    const TrcRun run = RunTrc(live);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("have no marks and no notes"));
  }
}

class TrcSavedNotes : public TrcNotes {
 protected:
  void SetUp() override {
    EXPECT_EQ(Notes({"--mark", "0=1", "--mark", "2=3", "--note", "4=last"}).status, 0);
  }
  TrcRun Save(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"save", m_path, m_new});
    return RunTrc(more);
  }
  std::vector<std::string> Saved() const { return LinesOf(RunTrc({"notes", m_new}).out); }
  bool IsSaved() const { return std::filesystem::exists(m_new); }

  const std::string m_new = m_dir.File("new.trc");
};

TEST_F(TrcSavedNotes, GoAlongWithAllTraces) {
  const TrcRun run = Save();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_THAT(Saved(), ElementsAre("0: 1 zero", "2: 3 two", "4: - four", "    last"));
  EXPECT_THAT(LinesOf(Notes().out), testing::SizeIs(4)) << "those of the old file stay";
}

TEST_F(TrcSavedNotes, HaveTheNewPlacesOfTheTracesThatAreChosen) {
  EXPECT_EQ(Save({"--from", "1", "--where", "text != \"three\""}).status, 0);
  EXPECT_THAT(Saved(), ElementsAre("1: 3 two", "2: - four", "    last"));
}

TEST_F(TrcSavedNotes, ReplaceNoOthersUntilTheUserSaysSo) {
  const std::string there = m_dir.File("new.trc.notes", "somebody's");
  TrcRun run = Save();
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("new.trc.notes: has marks and notes already; --replace-notes"));
  EXPECT_FALSE(IsSaved());
  EXPECT_EQ(ReadAll(there), "somebody's");
  run = Save({"--replace-notes"});
  EXPECT_EQ(run.status, 2) << "what cannot be read is never replaced";
  EXPECT_THAT(run.err, HasSubstr("the traces are saved without their marks and notes"));
  EXPECT_TRUE(IsSaved());
  EXPECT_EQ(ReadAll(there), "somebody's");
  std::filesystem::copy_file(m_path + ".notes", there,
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_EQ(Save({"--from", "4"}).status, 2);
  EXPECT_EQ(Save({"--from", "4", "--replace-notes"}).status, 0);
  EXPECT_THAT(Saved(), ElementsAre("0: - four", "    last"));
}

TEST_F(TrcSavedNotes, AreNoneWhereNoneIsChosen) {
  EXPECT_EQ(Save({"--from", "1", "--count", "1"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(m_new + ".notes"));
}

TEST_F(TrcSavedNotes, ThatAreOfAnotherFileAreToldAndStay) {
  Traces("a.trc", {"another", "file"});
  const TrcRun run = Save();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("a.trc.notes: of another trace file, not saved along"));
  EXPECT_TRUE(IsSaved());
  EXPECT_FALSE(std::filesystem::exists(m_new + ".notes"));
}

TEST_F(TrcSavedNotes, ThatCannotBeReadAreToldAndTheTracesAreSaved) {
  m_dir.File("a.trc.notes", "{");
  const TrcRun run = Save();
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("the traces are saved without them"));
  EXPECT_TRUE(IsSaved());
}

}  // namespace
