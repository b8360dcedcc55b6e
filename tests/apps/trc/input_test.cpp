// The inputs of trc: packed files, pipes, several files at once.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

class TrcInput : public testing::Test {
 protected:
  // A trace a second from the given one on, texts "a0", "a1", ...
  static TrcImage Image(const std::string& name, std::vector<unsigned> seconds) {
    TrcImage image;
    image.Name(7, name);
    for (std::size_t i = 0; i < seconds.size(); ++i)
      image.Trace({.text = name + std::to_string(i),
                   .component = 7,
                   .time = PackTime(9, 41, seconds[i], 0)});
    return image;
  }
  std::string Write(const std::string& file, const TrcImage& image) {
    return image.WriteTo(m_directory.File(file));
  }
  std::string Packed(const std::string& tool, const std::string& path, const std::string& to) {
    const std::string out = m_directory.File(to);
    EXPECT_EQ(system((tool + " -c '" + path + "' > '" + out + "'").c_str()), 0);
    return out;
  }
  static TrcRun Dump(std::vector<std::string> files,
                     const std::vector<std::string>& environment = {}) {
    files.insert(files.begin(), {"dump", "--format", "jsonl"});
    return RunTrc({.arguments = files, .environment = environment});
  }
  // Runs trc by a shell, with its standard input.
  std::string ByShell(const std::string& line) {
    const std::string out = m_directory.File("shell.out");
    EXPECT_EQ(system((line + " > '" + out + "' 2>&1").c_str()), 0) << line;
    return ReadAll(out);
  }

  TempDir m_directory;
};

TEST_F(TrcInput, PackedFilesAreReadByTheirContentNotTheirName) {
  const std::string file = Write("a.trc", Image("a", {1, 2, 3}));
  const std::string plain = Dump({file}).out;
  for (const std::string& packed :
       {Packed("gzip", file, "a.trc.gz"), Packed("zstd -q", file, "a.trc.zst"),
        Packed("gzip", file, "odd"), Packed("zstd -q", file, "odd2")}) {
    const TrcRun run = Dump({packed});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, plain);
  }
  EXPECT_EQ(InfoOf(Packed("gzip", file, "i.gz")).at("traces"), 3);
}

TEST_F(TrcInput, StandardInputAndPipesAreReadPackedAndPlain) {
  const std::string file = Write("a.trc", Image("a", {1, 2, 3}));
  const std::string trc = getenv("TRC");
  const std::string wanted = Dump({file, "--tail", "1"}).out;
  for (const std::string& line :
       {"cat '" + file + "' | " + trc + " dump - ", "gzip -c '" + file + "' | " + trc + " dump - ",
        trc + " dump - < '" + file + "'", "cat '" + file + "' | " + trc + " dump /dev/stdin "})
    EXPECT_EQ(ByShell(line + " --tail 1 --format jsonl"), wanted) << line;
}

TEST_F(TrcInput, ACutArchiveGivesWhatWasUnpackedAndSaysSo) {
  TrcImage image;
  for (unsigned i = 0; i < 20000; ++i) image.Trace("text " + std::to_string(i * 7919 % 10007));
  const std::string packed = Packed("gzip", Write("a.trc", image), "a.gz");
  const std::string bytes = ReadAll(packed);
  const std::string cut = m_directory.File("cut.gz", bytes.substr(0, bytes.size() / 2));
  const TrcRun run = Dump({cut});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("cut.gz: the archive is cut; what was unpacked before that is given"),
            std::string::npos)
      << run.err;
  EXPECT_GT(LinesOf(run.out).size(), 1000u);
  EXPECT_LT(LinesOf(run.out).size(), 20000u);
  const std::string zst = ReadAll(Packed("zstd -q", m_directory.File("a.trc"), "a.zst"));
  const TrcRun cutZst = Dump({m_directory.File("cut.zst", zst.substr(0, zst.size() - 100))});
  EXPECT_EQ(cutZst.status, 3);
  EXPECT_NE(cutZst.err.find("cut.zst: the archive is cut; "), std::string::npos) << cutZst.err;
  EXPECT_GT(LinesOf(cutZst.out).size(), 1000u);
  std::string damaged = bytes;
  for (std::size_t at = bytes.size() / 2; at < bytes.size() / 2 + 64; ++at) damaged[at] ^= 0x55;
  const TrcRun other = Dump({m_directory.File("damaged.gz", damaged)});
  EXPECT_EQ(other.status, 3) << other.err;
  EXPECT_NE(other.err.find("damaged.gz: the archive is damaged before byte "), std::string::npos);
  const TrcRun none = Dump({m_directory.File("none.gz", bytes.substr(0, 5))});
  EXPECT_EQ(none.status, 2);
  EXPECT_NE(none.err.find("none.gz: the archive is cut\n"), std::string::npos) << none.err;
  EXPECT_EQ(none.out, "");
}

TEST_F(TrcInput, SeveralPackedPartsAreOneFileAndWhatIsNoneBehindThemIsTold) {
  const std::string file = Write("a.trc", Image("a", {1, 2, 3})), bytes = ReadAll(file);
  const std::string one =
      ReadAll(Packed("gzip", m_directory.File("1", bytes.substr(0, 50)), "1.gz"));
  const std::string two = ReadAll(Packed("gzip", m_directory.File("2", bytes.substr(50)), "2.gz"));
  const TrcRun whole = Dump({m_directory.File("both.gz", one + two)});
  EXPECT_EQ(Texts(whole.out), "a0 a1 a2");
  EXPECT_EQ(whole.status, 0) << whole.err;
  const TrcRun more = Dump({m_directory.File("more.gz", one + two + "garbage")});
  EXPECT_EQ(Texts(more.out), "a0 a1 a2");
  EXPECT_EQ(more.status, 3);
}

TEST_F(TrcInput, AnArchiveMayBeginWithAFrameThatIsNoData) {
  const std::string file = Write("a.trc", Image("a", {1, 2, 3}));
  const std::string other("\x50\x2a\x4d\x18\x04\0\0\0size", 12);
  const TrcRun run =
      Dump({m_directory.File("b.zst", other + ReadAll(Packed("zstd -q", file, "a.zst")))});
  EXPECT_EQ(Texts(run.out), "a0 a1 a2");
  EXPECT_EQ(run.status, 0) << run.err;
}

// The process's file without a name in the folder, or -1.
int OpenUnpacked(pid_t process, const std::string& folder) {
  std::error_code gone;
  const std::string all = "/proc/" + std::to_string(process) + "/fd";
  for (const auto& one : std::filesystem::directory_iterator(all, gone))
    if (std::filesystem::read_symlink(one, gone).string().starts_with(folder + "/#"))
      return open(one.path().c_str(), O_RDONLY | O_CLOEXEC);
  return -1;
}

TEST_F(TrcInput, AnInterruptEndsTheUnpackingOfAPieceThatIsMuchLonger) {
  constexpr std::uintmax_t kBytes = 1 << 30;
  const std::string zeros = Write("zeros", Image("a", {})), folder = m_directory.File("tmp");
  std::filesystem::resize_file(zeros, kBytes);
  std::filesystem::create_directory(folder);
  TrcProcess trc({.arguments = {"dump", Packed("zstd -q", zeros, "bomb.zst")},
                  .environment = {"TMPDIR=" + folder}});
  int unpacked = -1;
  while (unpacked < 0 && !trc.Late()) unpacked = OpenUnpacked(trc.Id(), folder);
  trc.Interrupt();
  EXPECT_EQ(trc.Finish().status, 130);
  EXPECT_LT(std::filesystem::file_size("/proc/self/fd/" + std::to_string(unpacked)), kBytes);
  close(unpacked);
}

// Without a copy of what is no trace file, however long it is.
TEST_F(TrcInput, WhatIsNoTraceFileIsRefusedByItsFirstBytes) {
  const std::string zeros = m_directory.File("zeros", "");
  std::filesystem::resize_file(zeros, 64 << 20);
  for (const std::string& path : {std::string("/dev/zero"), Packed("gzip", zeros, "z.gz"),
                                  Packed("zstd -q", zeros, "z.zst")}) {
    const TrcRun run = RunTrc({.arguments = {"dump", path}, .fileBytesMax = 1});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "trc: " + path + ": Invalid format.\n");
  }
  EXPECT_EQ(ByShell("printf 'a log line\\n' | { \"$TRC\" info - || true; }"),
            "trc: standard input: Invalid format.\n");
  const std::string old = m_directory.File("old.trc");
  EXPECT_EQ(RunTrc({"gen", "--old", "-n", "9", old}).status, 0);
  const TrcRun older = Dump({Packed("gzip", old, "old.gz")});
  EXPECT_NE(older.err.find("old.gz: an older trace file format; 'trc convert "), std::string::npos);
}

TEST_F(TrcInput, StandardInputTwiceIsRefused) {
  EXPECT_EQ(ByShell("{ \"$TRC\" dump - - < /dev/null || true; }"),
            "trc: standard input can be given once only\n");
}

TEST_F(TrcInput, AsManyFilesAreOpenedAsTheSystemAllows) {
  const std::string file = Write("a.trc", Image("a", {1}));
  std::string files;
  for (int i = 0; i < 60; ++i) files += " '" + file + "'";
  const std::string out = ByShell("ulimit -Sn 40; \"$TRC\" find --total a0" + files);
  EXPECT_EQ(out, "60\n");
}

TEST_F(TrcInput, WhatIsUnpackedGoesToTheFolderForTemporaryFilesAndLeavesNothingThere) {
  const std::string packed = Packed("gzip", Write("a.trc", Image("a", {1})), "a.gz");
  const std::string folder = m_directory.File("tmp");
  std::filesystem::create_directory(folder);
  EXPECT_EQ(Dump({packed}, {"TMPDIR=" + folder}).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  const TrcRun run = Dump({packed}, {"TMPDIR=" + m_directory.File("nowhere")});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("no temporary file in "), std::string::npos) << run.err;
}

TEST_F(TrcInput, AFileThatFillsTheDiskEndsWithTheReason) {
  const std::string zeros = Write("zeros", Image("a", {}));
  std::filesystem::resize_file(zeros, 64 << 20);
  const std::string bomb = Packed("gzip", zeros, "bomb.gz");
  const TrcRun run = RunTrc({.arguments = {"dump", bomb}, .fileBytesMax = 16 << 20});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("bomb.gz: cannot write to a temporary file in "), std::string::npos)
      << run.err;
}

TEST_F(TrcInput, SeveralFilesComeInTheOrderOfTime) {
  const std::string a = Write("a.trc", Image("a", {1, 4, 9})),
                    b = Write("b.trc", Image("b", {2, 4}));
  const TrcRun run = Dump({a, b});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Texts(run.out), "a0 b0 a1 b1 a2");
  EXPECT_EQ(Texts(Dump({b, a}).out), "a0 b0 a1 b1 a2")
      << "of equal times the earlier file is first";
  EXPECT_EQ(Texts(Dump({Packed("gzip", b, "b.gz"), a}).out), "a0 b0 a1 b1 a2");
  EXPECT_EQ(JsonLinesOf(run.out)[1].at("component"), "b") << "ids are of their own file";
  EXPECT_EQ(JsonLinesOf(run.out)[1].at("i"), 1);
}

TEST_F(TrcInput, AFileKeepsItsOwnOrderWhereItsTimeGoesBack) {
  const std::string a = Write("a.trc", Image("a", {1, 8, 3, 9})),
                    b = Write("b.trc", Image("b", {2, 5}));
  EXPECT_EQ(Texts(Dump({b, a}).out), "a0 b0 b1 a1 a2 a3");
}

TEST_F(TrcInput, AllCommandsTakeSeveralFiles) {
  const std::string a = Write("a.trc", Image("a", {1, 4})), b = Write("b.trc", Image("b", {2}));
  EXPECT_EQ(Texts(RunTrc({"find", "0", a, b, "--format", "jsonl"}).out), "a0 b0");
  const std::string saved = m_directory.File("saved.trc");
  EXPECT_EQ(RunTrc({"save", a, b, saved}).status, 0);
  EXPECT_EQ(Texts(Dump({saved}).out), "a0 b0 a1");
  EXPECT_EQ(RunTrc({"export", a, b, "-", "--format", "csv-rfc4180", "-c", "Trace"}).out,
            "Trace\r\na0\r\nb0\r\na1\r\n");
  EXPECT_EQ(RunTrc({"tree", a, b, "--depth", "0"}).status, 0);
  const std::string text = m_directory.File("tree.txt");
  EXPECT_EQ(RunTrc({"tree", "--export", a, b, text}).status, 0);
  EXPECT_NE(ReadAll(text).find("b0"), std::string::npos);
}

TEST_F(TrcInput, ADamagedOrAMissingOneOfThemIsToldByItsName) {
  const std::string a = Write("a.trc", Image("a", {1}));
  const std::string bad = Write("bad.trc", Image("b", {2}).Raw(12));
  const TrcRun run = Dump({a, bad});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("bad.trc: damaged: 1 byte skipped"), std::string::npos) << run.err;
  EXPECT_EQ(Texts(run.out), "a0 b0");
  const TrcRun none = Dump({a, m_directory.File("none.trc")});
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.out, "");
  EXPECT_NE(none.err.find("none.trc: No such file"), std::string::npos);
}

TEST_F(TrcInput, MoreNamesThanAFileCanHoldAreToldAndIdsWithoutNamesStayNameless) {
  TrcImage many;
  for (unsigned id = 0; id < 65536; ++id)
    many.Name(static_cast<NameId>(id), "n" + std::to_string(id));
  for (unsigned id = 0; id < 65536; ++id)
    many.Trace({.text = "x", .component = static_cast<NameId>(id)});
  const std::string a = Write("many.trc", many), b = Write("b.trc", Image("other", {2}));
  const TrcRun run = Dump({a, b});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("together the files have more than 65,536 names"), std::string::npos)
      << run.err;
  const std::string bare = Write("bare.trc", TrcImage().Trace({.text = "x", .component = 9}));
  EXPECT_EQ(JsonLinesOf(Dump({bare, b}).out)[1].at("component"), nullptr);
}

}  // namespace
