#include "records/trc_writer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "base/mapped_file.h"
#include "records/trace_list.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

// An event as another library makes it: no record that could be copied.
class ForeignEvent final : public TraceEvent_i {
 public:
  explicit ForeignEvent(TraceFields fields) : m_fields(std::move(fields)) {}
  void Release() override { delete this; }
  std::uint32_t GetSequenceNumber() const override { return m_fields.count.value_or(1); }
  std::uint32_t GetDate() const override { return m_fields.date; }
  std::uint32_t GetTime() const override { return m_fields.time; }
  std::string GetText() const override { return m_fields.text; }
  NameId GetComponentId() const override { return m_fields.component; }
  NameId GetCategoryId() const override { return m_fields.category; }
  NameId GetMachineId() const override { return m_fields.machine; }
  NameId GetAppId() const override { return m_fields.app; }
  NameId GetSourceFileId() const override { return m_fields.file; }
  NameId GetPidId() const override { return m_fields.pid; }
  NameId GetTidId() const override { return m_fields.tid; }
  int GetAttributes() const override { return m_fields.attributes; }
  std::uint64_t GetTicCount() const override { return m_fields.tic; }
  std::uint32_t GetSourceLine() const override { return m_fields.line; }
  std::string GetStack() const override { return m_fields.stack; }

 private:
  TraceFields m_fields;
};

const TraceFields kFull = {.text = "zürich",
                           .stack = "main",
                           .count = 17,
                           .machine = 17,
                           .app = 16,
                           .component = 15,
                           .category = 14,
                           .tic = 0xFF00000000000001,
                           .pid = 13,
                           .tid = 12,
                           .attributes = 0x801A,
                           .file = 11,
                           .line = 4000000000};

NameMap AllNames() {
  return {{11, {"file"}},      {12, {"tid"}}, {13, {"pid"}},    {14, {"category"}},
          {15, {"component"}}, {16, {"app"}}, {17, {"machine"}}};
}

class TrcWriterTest : public testing::Test {
 protected:
  // The file that the writer makes of these traces.
  std::string Saved(const std::vector<const TraceEvent_i*>& events, NameMap& names) {
    const std::string path = m_dir.File("out.trc");
    TrcWriter writer;
    EXPECT_TRUE(writer.Create(path));
    EXPECT_TRUE(writer.WriteHeader());
    for (const TraceEvent_i* event : events) EXPECT_TRUE(writer.Write(*event, names));
    EXPECT_TRUE(writer.Finish());
    return ReadAll(path);
  }
  TempDir m_dir;
};

TEST_F(TrcWriterTest, AnEmptyDocumentIs16Bytes) {
  NameMap names;
  EXPECT_EQ(Saved({}, names), TrcImage().Bytes());
}

TEST_F(TrcWriterTest, TheNamesOfATraceStandBeforeItInTheirOrder) {
  const GuardedBytes bytes = TrcImage("").Trace(kFull).Guarded();
  NameMap names = AllNames();
  const _TraceEvent_t event(bytes.At(1));
  TrcImage expected;
  expected.Name(17, "machine").Name(16, "app").Name(15, "component").Name(14, "category");
  expected.Name(13, "pid").Name(12, "tid").Name(11, "file").Trace(kFull);
  EXPECT_EQ(Saved({&event}, names), expected.Bytes());
  for (const auto& [id, entry] : names) EXPECT_NE(entry.written, 0u) << id;
}

TEST_F(TrcWriterTest, ANameIsWrittenOnceHoweverManyTracesAndFieldsUseIt) {
  const GuardedBytes bytes =
      TrcImage("").Trace({.text = "up", .machine = 11, .file = 11}).Guarded();
  NameMap names = AllNames();
  const _TraceEvent_t event(bytes.At(1));
  TrcImage expected;
  expected.Name(11, "file").Trace({.text = "up", .machine = 11, .file = 11});
  expected.Trace({.text = "up", .count = 1, .machine = 11, .file = 11});
  EXPECT_EQ(Saved({&event, &event}, names), expected.Bytes());
}

TEST_F(TrcWriterTest, MarksDecideWhichNamesAreWrittenUntilTheyAreCleared) {
  const GuardedBytes bytes = TrcImage("").Trace({.text = "up", .machine = 11}).Guarded();
  NameMap names = AllNames();
  names[11].written = 1;
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(Saved({&event}, names), TrcImage().Trace({.text = "up", .machine = 11}).Bytes());
  ClearWrittenMarks(names);
  for (const auto& [id, entry] : names) EXPECT_EQ(entry.written, 0u) << id;
  EXPECT_EQ(Saved({&event}, names),
            TrcImage().Name(11, "file").Trace({.text = "up", .machine = 11}).Bytes());
}

TEST_F(TrcWriterTest, AnIdThatTheMapLacksGetsNoNameRecordAndIsNotInserted) {
  const GuardedBytes bytes = TrcImage("").Trace(kFull).Guarded();
  NameMap names = {{15, {"component"}}};
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(Saved({&event}, names), TrcImage().Name(15, "component").Trace(kFull).Bytes());
  EXPECT_EQ(names.size(), 1u);
}

TEST_F(TrcWriterTest, AnEventWithoutARecordIsWrittenThroughItsAccessors) {
  NameMap names;
  const ForeignEvent event(kFull);
  EXPECT_EQ(Saved({&event}, names), TrcImage().Trace(kFull).Bytes());
}

TEST_F(TrcWriterTest, ARecordIsWrittenAsItStandsWithNulsAndBytesThatAreNoUtf8) {
  const TraceFields odd = {.text = {"a\0b\xFF", 4}, .stack = {"\0", 1}};
  const GuardedBytes bytes = TrcImage("").Trace(odd).Guarded();
  NameMap names;
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(Saved({&event}, names), TrcImage().Trace(odd).Bytes());
}

TEST_F(TrcWriterTest, NamesAndTextsLongerThan65535BytesAreCutBeforeACharacter) {
  const std::string most(65534, 'x');
  NameMap names = {{11, {most + "ü"}}};
  const ForeignEvent event({.text = most + "ü", .stack = most + "ü", .machine = 11});
  EXPECT_EQ(Saved({&event}, names),
            TrcImage().Name(11, most).Trace({.text = most, .stack = most, .machine = 11}).Bytes());
  EXPECT_EQ(names[11].name.size(), 65536u);
}

TEST_F(TrcWriterTest, TheLongestRecordPassesThroughTheSmallBuffer) {
  const TraceFields longest = {.text = std::string(65535, 'x'), .stack = std::string(65535, 'y')};
  const GuardedBytes bytes = TrcImage("").Trace(longest).Guarded();
  NameMap names;
  const _TraceEvent_t event(bytes.At(1));
  EXPECT_EQ(Saved({&event}, names), TrcImage().Trace(longest).Bytes());
}

TEST_F(TrcWriterTest, ARecordCutByTheEndOfItsFileIsWrittenWholeWithZeros) {
  TrcImage image;
  image.Trace("text").Cut(2 + 2);
  const auto file = MappedFile::Open(image.WriteTo(m_dir.File("cut.trc")));
  ASSERT_TRUE(file);
  NameMap names;
  const _TraceEvent_t event(file->View().data() + 17);
  EXPECT_EQ(Saved({&event}, names), TrcImage().Trace({.text = {"te\0\0", 4}}).Bytes());
}

TEST_F(TrcWriterTest, ARecordWhoseFileIsCutWhileItIsMappedIsWrittenAsZeros) {
  const TraceFields longest = {.text = std::string(60000, 'x'), .count = 5};
  // The last record keeps the first one off the last page, of which the map has a copy.
  const std::string path =
      TrcImage().Trace(longest).Trace(std::string(20000, 'z')).WriteTo(m_dir.File("cut.trc"));
  const auto file = MappedFile::Open(path);
  ASSERT_TRUE(file);
  ASSERT_EQ(truncate(path.c_str(), 4096), 0);
  NameMap names;
  const _TraceEvent_t event(file->View().data() + 17);
  const std::string saved = Saved({&event}, names);
  ASSERT_EQ(saved.size(), 16u + 45 + 60000);
  EXPECT_EQ(saved.substr(0, 4096), TrcImage().Trace(longest).Bytes().substr(0, 4096));
  EXPECT_EQ(saved.find_first_not_of('\0', 4096), saved.npos);
}

TEST_F(TrcWriterTest, AMarkIsSetOnlyWhenItsNameWasWritten) {
  NameMap names = {{1, {std::string(2000, 'a')}}, {2, {"b"}}};
  const ForeignEvent event({.machine = 1, .app = 2});
  TrcWriter writer;
  ASSERT_TRUE(writer.Create("/dev/full"));
  EXPECT_TRUE(writer.WriteHeader());
  EXPECT_FALSE(writer.Write(event, names));
  EXPECT_EQ(names[1].written, 0u);
  EXPECT_EQ(names[2].written, 0u);
  EXPECT_FALSE(writer.Write(event, names));
  EXPECT_FALSE(writer.Finish());
}

TEST_F(TrcWriterTest, AFullDiskAtTheLastFlushIsSeenByFinish) {
  TrcWriter writer;
  ASSERT_TRUE(writer.Create("/dev/full"));
  EXPECT_TRUE(writer.WriteHeader());
  EXPECT_FALSE(writer.Finish());
}

TEST_F(TrcWriterTest, WithoutFinishTheFileIsCompleteAllTheSame) {
  const std::string path = m_dir.File("out.trc");
  {
    TrcWriter writer;
    NameMap names;
    ASSERT_TRUE(writer.Create(path));
    EXPECT_TRUE(writer.WriteHeader());
    EXPECT_TRUE(writer.Write(ForeignEvent({.text = "up"}), names));
    EXPECT_EQ(ReadAll(path), "");
  }
  EXPECT_EQ(ReadAll(path), TrcImage().Trace("up").Bytes());
}

TEST_F(TrcWriterTest, AFileBeingWrittenIsSharedWithNobodyUntilFinish) {
  const std::string path = m_dir.File("out.trc", "old");
  TrcWriter writer, second;
  ASSERT_TRUE(writer.Create(path));
  EXPECT_TRUE(writer.IsOpen());
  EXPECT_EQ(ReadAll(path), "");
  std::string why;
  EXPECT_FALSE(second.Create(path, &why));
  EXPECT_EQ(why, "In use by this program");
  EXPECT_FALSE(MappedFile::Open(path));
  EXPECT_TRUE(writer.Finish());
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_TRUE(second.Create(path));
}

TEST_F(TrcWriterTest, AnOpenFileIsNotOverwritten) {
  const std::string path = TrcImage().Trace("up").WriteTo(m_dir.File("open.trc"));
  const auto file = MappedFile::Open(path);
  TrcWriter writer;
  EXPECT_FALSE(writer.Create(path));
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_EQ(ReadAll(path), TrcImage().Trace("up").Bytes());
}

TEST_F(TrcWriterTest, WithoutAFileEveryStepFails) {
  TrcWriter writer;
  NameMap names;
  EXPECT_FALSE(writer.WriteHeader());
  EXPECT_FALSE(writer.Write(ForeignEvent({}), names));
  EXPECT_FALSE(writer.Finish());
}

TEST_F(TrcWriterTest, AnotherCreateEndsTheFileBefore) {
  TrcWriter writer;
  ASSERT_TRUE(writer.Create(m_dir.File("a")));
  EXPECT_TRUE(writer.WriteHeader());
  ASSERT_TRUE(writer.Create(m_dir.File("b")));
  EXPECT_EQ(ReadAll(m_dir.File("a")), TrcImage().Bytes());
  EXPECT_TRUE(writer.Finish());
  EXPECT_EQ(ReadAll(m_dir.File("b")), "");
}

TEST_F(TrcWriterTest, AFlushHandsOverWhatIsHeldAndTheWriterGoesOn) {
  TrcWriter writer;
  EXPECT_FALSE(writer.Flush());
  ASSERT_TRUE(writer.Create(m_dir.File("out.trc")));
  ASSERT_TRUE(writer.WriteHeader());
  EXPECT_EQ(ReadAll(m_dir.File("out.trc")), "");
  EXPECT_TRUE(writer.Flush());
  EXPECT_EQ(ReadAll(m_dir.File("out.trc")), TrcImage().Bytes());
  EXPECT_TRUE(writer.Finish());
  EXPECT_EQ(ReadAll(m_dir.File("out.trc")), TrcImage().Bytes());
}

TEST_F(TrcWriterTest, AFlushIntoAFullDiskFails) {
  TrcWriter writer;
  ASSERT_TRUE(writer.Create("/dev/full"));
  ASSERT_TRUE(writer.WriteHeader());
  EXPECT_FALSE(writer.Flush());
  EXPECT_FALSE(writer.Finish());
}

// Reads a file as a document does.
struct Loaded {
  void OnName(NameId id, std::string_view utf8) { names[id] = {std::string(utf8), 0}; }
  void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }
  NameMap names;
  TraceList_t traces;
};

TEST_F(TrcWriterTest, ASavedFileReadAgainEqualsTheOriginal) {
  TrcImage image;
  image.Trace(kFull).Raw(12).Name(15, "old");  // names after their traces, and one twice
  for (const auto& [id, entry] : AllNames()) image.Name(id, entry.name);
  for (int number = 0; number < 3000; ++number) {
    image.Trace({.text = std::to_string(number), .machine = 17, .tid = 12});
  }
  Loaded first, second;
  const auto file = MappedFile::Open(image.WriteTo(m_dir.File("in.trc")));
  ASSERT_TRUE(file);
  WalkTrc(file->View(), first);
  EXPECT_EQ(first.names.at(15).name, "component");
  ASSERT_EQ(first.traces.size(), 3001u);

  std::vector<const TraceEvent_i*> events;
  first.traces.ForEach(0, [&](TraceEvent_i* event) { events.push_back(event); });
  Saved(events, first.names);
  const auto saved = MappedFile::Open(m_dir.File("out.trc"));
  ASSERT_TRUE(saved);
  WalkTrc(saved->View(), second);
  ASSERT_EQ(second.traces.size(), first.traces.size());
  for (std::size_t at = 0; at < first.traces.size(); ++at) {
    const std::uint8_t *const a = first.traces[at]->Record(), *const b =
                                                                  second.traces[at]->Record();
    const std::size_t size = RawTrace(a).Size();
    ASSERT_EQ(std::string(a, a + size), std::string(b, b + size));
  }
  ASSERT_EQ(second.names.size(), first.names.size());
  for (const auto& [id, entry] : first.names) EXPECT_EQ(second.names.at(id).name, entry.name);
}

}  // namespace
