// What a load finds piece by piece, and put together.
#include "documents/trace_part.h"

#include <random>

#include "documents_fixture.h"
#include "records/trc_walk.h"

namespace {

bool GoOn(std::uint64_t) {
  return true;
}

std::unique_ptr<TracePart> Whole(Bytes file) {
  auto part = std::make_unique<TracePart>();
  part->Walk(file, kTrcHeaderBytes, file.size(), GoOn);
  return part;
}

void ExpectTheSame(const TraceIndexes& indexes, const TraceIndexes& other) {
  EXPECT_EQ(indexes.machines.Ids(), other.machines.Ids());
  EXPECT_EQ(indexes.applications.Ids(), other.applications.Ids());
  EXPECT_EQ(indexes.components.Ids(), other.components.Ids());
  EXPECT_EQ(indexes.categories.Ids(), other.categories.Ids());
  EXPECT_EQ(indexes.processIds.Ids(), other.processIds.Ids());
  EXPECT_EQ(indexes.threadIds.Ids(), other.threadIds.Ids());
  EXPECT_EQ(indexes.sourceFiles.Ids(), other.sourceFiles.Ids());
  EXPECT_EQ(indexes.processes, other.processes);
}

void ExpectTheSame(const CTraceFileDoc& document, const TracePart& part, Bytes file) {
  ASSERT_EQ(document.m_traces.size(), part.traces.size());
  for (std::size_t i = 0; i < part.traces.size(); ++i) {
    const RawTrace trace(document.m_traces[i]->Record()), wanted(part.traces[i]->Record());
    ASSERT_EQ(trace.SequenceNumber(), wanted.SequenceNumber()) << i;
    ASSERT_EQ(trace.Text(), wanted.Text()) << i;
  }
  ASSERT_EQ(document.m_names.size(), part.names.size());
  for (const auto& [id, entry] : part.names)
    EXPECT_EQ(NameOf(document.m_names, id), entry.name) << id;
  EXPECT_EQ(document.NameRecords(), part.nameRecords);
  EXPECT_EQ(DamageText(document.Damage(), true), DamageText(part.damage, true));
  EXPECT_EQ(document.Damage().cutAt, part.damage.cutAt);
  EXPECT_EQ(document.FileSize(), file.size());
  ExpectTheSame(document.m_indexes, part.indexes);
}

// So many mebibytes of traces of many ids, among them names and stray bytes, that
// several walkers load it.
TrcImage LargeImage() {
  TrcImage image;
  std::mt19937 random(7);
  const auto below = [&random](unsigned bound) { return static_cast<NameId>(random() % bound); };
  while (image.Size() < 10 * 1024 * 1024) {
    if (below(50) == 0) image.Name(below(60000), "name");
    if (below(70) == 0) image.Raw(200 + below(50));
    image.Trace({.text = std::string(below(1500), 'x'),
                 .machine = below(5),
                 .app = below(40),
                 .component = below(300),
                 .category = below(2000),
                 .pid = below(900),
                 .tid = below(30000),
                 .file = below(500)});
  }
  return image;
}

TEST(TracePart, PartsThatFollowOneAnotherHaveWhatOneWalkHas) {
  std::mt19937 random(5);
  TrcImage image;
  for (int i = 0; i < 3000; ++i) {
    if (random() % 20 == 0) image.Name(static_cast<NameId>(random() % 50), std::to_string(i));
    for (unsigned stray = random() % 9 == 0 ? random() % 4 : 0; stray > 0; --stray) image.Raw(99);
    image.Trace({.machine = static_cast<NameId>(random() % 4), .tid = static_cast<NameId>(i)});
  }
  image.Trace({.text = "cut"}).Cut(2);
  const GuardedBytes bytes = image.Guarded();
  const auto whole = Whole(bytes.View());
  ASSERT_TRUE(whole->damage.cutAt);
  for (const std::uint64_t step : {1, 50, 5000}) {
    TracePart joined;
    for (std::uint64_t at = kTrcHeaderBytes; at < bytes.View().size();) {
      TracePart part;
      const std::uint64_t limit = std::min<std::uint64_t>(at + step, bytes.View().size());
      at = part.Walk(bytes.View(), at, limit, GoOn);
      joined.Append(part);
    }
    ASSERT_EQ(joined.traces.size(), whole->traces.size());
    for (std::size_t i = 0; i < whole->traces.size(); ++i)
      ASSERT_EQ(joined.traces[i]->Record(), whole->traces[i]->Record());
    ASSERT_EQ(joined.names.size(), whole->names.size());
    for (const auto& [id, entry] : whole->names) EXPECT_EQ(NameOf(joined.names, id), entry.name);
    EXPECT_EQ(joined.nameRecords, whole->nameRecords);
    EXPECT_EQ(DamageText(joined.damage, true), DamageText(whole->damage, true));
    ExpectTheSame(joined.indexes, whole->indexes);
  }
}

class LargeFileTest : public DocumentsTest {};

// Records of all lengths, so that some of them cross the ends of windows.
TrcImage ImageOfLongRecords(std::mt19937& random) {
  TrcImage image;
  const auto length = [&random] {
    constexpr std::size_t kMost[] = {100, 3000, 65'535};
    return random() % (kMost[random() % 3] + 1);
  };
  while (image.Size() < 6 * TrcWindow::kBytes) {
    if (random() % 3 == 0) image.Name(static_cast<NameId>(random()), std::string(length(), 'n'));
    for (std::size_t stray = random() % 5 == 0 ? random() % 9 : 0; stray > 0; --stray)
      image.Raw(99);
    image.Trace({.text = std::string(length(), 't'),
                 .stack = std::string(length(), 's'),
                 .machine = static_cast<NameId>(random() % 9),
                 .file = static_cast<NameId>(random())});
  }
  return image;
}

TEST_F(LargeFileTest, APartOfCopiesIsThatOfTheView) {
  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round) {
    TrcImage image = ImageOfLongRecords(random);
    if (round % 2) image.Cut(random() % (round % 4 == 1 ? 200 : image.Size() / 2));
    const std::string path = image.WriteTo(m_temp.File("long.trc"));
    const auto file = MappedFile::Open(path);
    ASSERT_TRUE(file);
    const Bytes bytes = file->View();
    TracePart copied(bytes.size(), *file, TrcWindow::Way::Copy), whole;
    const std::uint64_t reached = copied.Walk(bytes, kTrcHeaderBytes, bytes.size(), GoOn);
    ASSERT_EQ(reached, whole.Walk(bytes, kTrcHeaderBytes, bytes.size(), GoOn));
    ASSERT_EQ(copied.traces.size(), whole.traces.size());
    for (std::size_t i = 0; i < whole.traces.size(); ++i)
      ASSERT_EQ(copied.traces[i]->Record(), whole.traces[i]->Record());
    ASSERT_EQ(copied.names.size(), whole.names.size());
    for (const auto& [id, entry] : whole.names) ASSERT_EQ(NameOf(copied.names, id), entry.name);
    EXPECT_EQ(copied.nameRecords, whole.nameRecords);
    EXPECT_EQ(DamageText(copied.damage, true), DamageText(whole.damage, true));
    ExpectTheSame(copied.indexes, whole.indexes);
  }
}

TEST_F(LargeFileTest, AWalkOfCopiesEndsWhereItIsToldAtTheEndOfAWindowToo) {
  TrcImage image;
  for (int i = 0; i < 100; ++i) image.Trace({.text = std::string(60'000, 't')});
  const auto file = MappedFile::Open(image.WriteTo(m_temp.File("long.trc")));
  ASSERT_TRUE(file);
  for (const auto way : {TrcWindow::Way::Copy, TrcWindow::Way::View}) {
    TracePart part(file->Size(), *file, way);
    int looks = 0;
    const auto look = [&looks](std::uint64_t) { return ++looks < 3; };
    const std::uint64_t reached = part.Walk(file->View(), kTrcHeaderBytes, file->Size(), look);
    EXPECT_EQ(looks, 3);
    EXPECT_LT(reached, 4 * TrcWindow::kBytes);
    EXPECT_FALSE(part.damage.cutAt);
  }
}

TEST_F(LargeFileTest, CopiesOfAFileThatWasCutAreThoseOfItsView) {
  std::mt19937 random(12);
  for (int round = 0; round < 10; ++round) {
    const TrcImage image = ImageOfLongRecords(random);
    const std::string path = image.WriteTo(m_temp.File("long.trc"));
    const auto file = MappedFile::Open(path);
    ASSERT_TRUE(file);
    std::filesystem::resize_file(path, random() % image.Size());
    const Bytes bytes = file->View();
    TracePart copied(bytes.size(), *file, TrcWindow::Way::Copy), whole;
    copied.Walk(bytes, kTrcHeaderBytes, bytes.size(), GoOn);
    whole.Walk(bytes, kTrcHeaderBytes, bytes.size(), GoOn);
    EXPECT_EQ(file->Change().kind, FileChange::Kind::Shorter);
    ASSERT_EQ(copied.traces.size(), whole.traces.size());
    EXPECT_EQ(DamageText(copied.damage, true), DamageText(whole.damage, true));
    ExpectTheSame(copied.indexes, whole.indexes);
  }
}

TEST_F(LargeFileTest, IsLoadedByAllWalkersAsByOne) {
  TrcImage image = LargeImage();
  image.Trace({.text = "cut", .machine = 77}).Cut(4);
  const GuardedBytes bytes = image.Guarded();
  const CTraceFileDoc& document = Load(image);
  ExpectTheSame(document, *Whole(bytes.View()), bytes.View());
}

TEST_F(LargeFileTest, TellsHowFarItIsInRisingPositionsUpToItsEnd) {
  const TrcImage image = LargeImage();
  Load(image);
  std::uint64_t before = 0;
  for (const std::string& line : m_host.Transcript()) {
    if (line.rfind("position ", 0) != 0) continue;
    const std::uint64_t position = std::stoull(line.substr(9));
    EXPECT_GE(position, before);
    before = position;
  }
  EXPECT_EQ(before, image.Size());
}

}  // namespace
