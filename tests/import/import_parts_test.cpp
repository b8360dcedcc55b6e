#include "import/import_parts.h"

#include <gmock/gmock.h>

#include "base/mapped_file.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"

namespace {

using testing::ElementsAre;

// The traces of a file as texts with their components.
struct PartTraces {
  NameMap names = {};
  std::vector<std::string> traces = {};

  void OnName(NameId id, std::string_view text) { names[id].name = text; }
  void OnTrace(const std::uint8_t* record) {
    const RawTrace trace(record);
    traces.push_back(NameOf(names, trace.ComponentId()) + ":" + std::string(trace.Text()));
  }
  void OnUnknownTag(std::uint64_t position) { ADD_FAILURE() << position; }
  void OnCutRecord(std::uint64_t position) { ADD_FAILURE() << position; }
  bool OnProgress(std::uint64_t) { return true; }
};

std::vector<std::string> TracesIn(const std::string& path) {
  std::string why;
  const auto file = MappedFile::Open(path, &why);
  if (!file) return {why};
  PartTraces walked;
  WalkTrc(file->View(), walked);
  return walked.traces;
}

ImportedTrace Trace(std::string_view component, std::string_view text) {
  ImportedTrace trace;
  trace[ImportName::Component] = component;
  trace.text = text;
  return trace;
}

TEST(ImportParts, WritesItsTracesInTheirOrderAndOnlyWhenAllAreThere) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  std::string why;
  ImportParts parts(kTrcFileBytesMax);
  ASSERT_TRUE(parts.Begin(path, &why)) << why;
  EXPECT_TRUE(parts.Put(Trace("Net", "one"), &why));
  EXPECT_TRUE(parts.Put(Trace("Db", "two"), &why));
  EXPECT_TRUE(parts.Put(Trace("Net", "three"), &why));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(parts.Finish(&why)) << why;
  EXPECT_THAT(TracesIn(path), ElementsAre("Net:one", "Db:two", "Net:three"));
}

TEST(ImportParts, WithoutAFinishNothingIsLeft) {
  const TempDir directory;
  {
    ImportParts parts(kTrcFileBytesMax);
    std::string why;
    ASSERT_TRUE(parts.Begin(directory.File("out.trc"), &why));
    EXPECT_TRUE(parts.Put(Trace("Net", "one"), &why));
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST(ImportParts, TracesThatDoNotFitGoIntoFurtherFiles) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  const std::string text(60000, 'x');
  ImportParts parts(std::uint64_t{1} << 20);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  for (int number = 0; number < 40; ++number)
    ASSERT_TRUE(parts.Put(Trace("Net", text), &why)) << why;
  ASSERT_TRUE(parts.Finish(&why)) << why;
  std::size_t traces = 0;
  EXPECT_GE(parts.Paths().size(), 3u);
  EXPECT_EQ(parts.Paths()[1], directory.File("out-2.trc"));
  for (const std::string& part : parts.Paths()) {
    EXPECT_LT(std::filesystem::file_size(part), std::uint64_t{1} << 20);
    for (const std::string& trace : TracesIn(part)) {
      EXPECT_EQ(trace, "Net:" + text);
      ++traces;
    }
  }
  EXPECT_EQ(traces, 40u);
}

TEST(ImportParts, TracesWithMoreNamesThanAFileHoldsGoIntoAFurtherFile) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  for (int number = 0; number < 65536; ++number) {
    const std::string name = "c" + std::to_string(number);
    ASSERT_TRUE(parts.Put(Trace(name, "x"), &why)) << why;
  }
  ASSERT_TRUE(parts.Finish(&why)) << why;
  ASSERT_EQ(parts.Paths().size(), 2u);
  // One id stands for the missing names.
  EXPECT_EQ(TracesIn(path).size(), 65535u);
  EXPECT_EQ(TracesIn(path).back(), "c65534:x");
  EXPECT_THAT(TracesIn(directory.File("out-2.trc")), ElementsAre("c65535:x"));
}

TEST(ImportParts, WhatIsLostOfTheFirstTraceOfAFurtherFileIsCountedOnce) {
  const TempDir directory;
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  ASSERT_TRUE(parts.Begin(directory.File("out.trc"), &why));
  for (int number = 0; number < 65535; ++number)
    ASSERT_TRUE(parts.Put(Trace("c" + std::to_string(number), "x"), &why)) << why;
  ASSERT_EQ(parts.Paths().size(), 1u);
  const std::string name = std::string("a\0b", 3) + std::string(70000, 'n');
  ASSERT_TRUE(parts.Put(Trace(name, "x"), &why)) << why;
  ASSERT_TRUE(parts.Finish(&why)) << why;
  ASSERT_EQ(parts.Paths().size(), 2u);
  EXPECT_EQ(parts.Losses().nulBytes, 1u);
  EXPECT_EQ(parts.Losses().cutNames, 1u);
}

TEST(ImportParts, AFurtherFileReplacesNone) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  const std::string other = directory.File("out-2.trc", "precious");
  ImportParts parts(std::uint64_t{600} << 10);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  const std::string text(60000, 'x');
  bool put = true;
  for (int number = 0; number < 20 && put; ++number) put = parts.Put(Trace("Net", text), &why);
  EXPECT_FALSE(put);
  EXPECT_NE(why.find(other + " for the others exists already"), std::string::npos) << why;
  EXPECT_EQ(ReadAll(other), "precious");
}

TEST(ImportParts, LongTextsAndNamesAreCutBetweenCharactersAndCounted) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  const std::string longText = std::string(65534, 'x') + "\xC3\xA9";
  ASSERT_TRUE(parts.Put(Trace(longText, longText), &why));
  ASSERT_TRUE(parts.Finish(&why));
  EXPECT_EQ(parts.Losses().cutTexts, 1u);
  EXPECT_EQ(parts.Losses().cutNames, 1u);
  const std::string kept(65534, 'x');
  EXPECT_THAT(TracesIn(path), ElementsAre(kept + ":" + kept));
}

TEST(ImportParts, LinesAreAddedToTheLastTextUntilItIsFull) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  EXPECT_FALSE(parts.AddLine("no trace yet"));
  ImportedTrace first = Trace("Net", "one");
  first.stack = "s";
  ASSERT_TRUE(parts.Put(first, &why));
  EXPECT_TRUE(parts.AddLine("\tat a.b"));
  EXPECT_TRUE(parts.AddLine(""));
  EXPECT_TRUE(parts.AddLine(" x"));
  ASSERT_TRUE(parts.Put(Trace("Net", std::string(65530, 'y')), &why));
  EXPECT_TRUE(parts.AddLine("123456789"));
  EXPECT_TRUE(parts.AddLine("lost"));
  ASSERT_TRUE(parts.Finish(&why));
  EXPECT_EQ(parts.Losses().cutTexts, 1u);
  EXPECT_THAT(TracesIn(path),
              ElementsAre("Net:one\n\tat a.b\n\n x", "Net:" + std::string(65530, 'y') + "\n1234"));
}

TEST(ImportParts, ANulByteIsReplacedBecauseItWouldEndTheText) {
  const TempDir directory;
  const std::string path = directory.File("out.trc");
  ImportParts parts(kTrcFileBytesMax);
  std::string why;
  ASSERT_TRUE(parts.Begin(path, &why));
  ASSERT_TRUE(parts.Put(Trace(std::string_view("N\0t", 3), std::string_view("a\0b\0", 4)), &why));
  ASSERT_TRUE(parts.Finish(&why));
  EXPECT_EQ(parts.Losses().nulBytes, 3u);
  EXPECT_THAT(TracesIn(path), ElementsAre("N\xE2\x90\x80t:a\xE2\x90\x80"
                                          "b\xE2\x90\x80"));
}

}  // namespace
