// The scan of a file by threads, beside a matcher that looks at each text.
#include "tree/find/scan/text_scan.h"

#include <gtest/gtest.h>

#include <random>

#include "documents/trace_part.h"
#include "records/trc_walk.h"
#include "support/temp_dir.h"
#include "support/trace_list_sink.h"
#include "support/trc_image.h"
#include "tree/find/scan/load_scan.h"
#include "tree/find/scan/piece_scan.h"
#include "tree/regex/plan/regex_matcher.h"

namespace {

struct Pattern {
  const char* text;
  RegexOptions options;
};

constexpr RegexOptions kLiteral{.literal = true};
const Pattern kPatterns[] = {
    {"cart", kLiteral},
    {"CART", {.ignoreCase = true, .literal = true}},
    {"ca", kLiteral},
    {"t", kLiteral},
    {"Ab", {.ignoreCase = true, .literal = true, .wordSearch = true}},
    {"car", {.literal = true, .wordSearch = true}},
    {"nowhere at all", kLiteral},
    {"^ca", {}},
    {"a.*cart", {}},
    {"[0-9]+ a", {}},
    {".*rt", {}},
    {"\\(a*\\)\\1b", {}},
    {"[abc]*", {}},
    {"t$", {}},
};

class TextScanTest : public testing::Test {
 protected:
  std::size_t Below(std::size_t bound) { return m_random() % bound; }
  std::string RandomText() {
    static const char* const kWords[] = {"cart", "Cart", " ",  "a",     "ca", "rt", "t",
                                         "12 a", "ab",   "\n", "carts", "b",  "x"};
    std::string text;
    for (std::size_t words = Below(9); words > 0; --words) text += kWords[Below(13)];
    if (Below(20) == 0) text.insert(Below(text.size() + 1), 1, '\0');
    return text;
  }
  // What is searched also stands in names, in stacks, in numbers and between records.
  TrcImage RandomImage(std::size_t traces) {
    TrcImage image;
    for (std::size_t i = 0; i < traces; ++i) {
      if (Below(5) == 0) image.Name(static_cast<NameId>(Below(9)), RandomText());
      if (Below(30) == 0) image.Raw('c').Raw('a').Raw('r').Raw('t');
      TraceFields fields{.text = RandomText(), .stack = Below(3) == 0 ? RandomText() : ""};
      if (Below(4) == 0) fields.count = 0x63617274;  // "cart"
      if (Below(4) == 0) fields.line = 0x63617274;
      image.Trace(fields);
    }
    return image;
  }
  void Open(const TrcImage& image) {
    m_file = MappedFile::Open(image.WriteTo(m_dir.File("a.trc")));
    ASSERT_TRUE(m_file);
    m_traces.Clear();
    WalkTrc(m_file->View(), TraceListSink{m_traces});
    m_lent = std::make_shared<LentTraces>(m_traces, m_file);
  }
  // The places of the traces that match, in the order of the search.
  std::vector<std::size_t> Plain(const RegexProgram& program, const ScanOrder& order) {
    const RegexPlan plan(program);
    std::vector<std::size_t> places;
    const auto test = [&](std::size_t place) {
      constexpr std::int64_t kAllSteps = 1'000'000'000;
      const std::string_view text = RawTrace(m_traces[place]->Record()).Text();
      if (m_matcher.Begin(plan, text, kAllSteps) == RegexAnswer::Yes) places.push_back(place);
    };
    const std::size_t size = m_traces.size(),
                      count = order.backward ? order.start + 1 : size - order.start;
    for (std::size_t i = 0; i < (order.wraps ? size : count); ++i)
      test(order.backward ? (order.start + size - i) % size : (order.start + i) % size);
    return places;
  }
  std::vector<std::size_t> Scanned(TextScan& scan) {
    std::vector<std::size_t> places;
    for (;;) {
      switch (scan.Next(std::chrono::milliseconds(100))) {
        case TextScan::State::Found:
          EXPECT_TRUE(scan.IsSure());
          places.push_back(scan.Place());
          break;
        case TextScan::State::NotYet:
          break;
        case TextScan::State::Failed:
          ADD_FAILURE() << "failed";
          return places;
        case TextScan::State::Over:
          return places;
      }
    }
  }
  void ExpectAll(const Pattern& pattern, const ScanOrder& order, std::size_t perPiece) {
    const RegexProgram program = RegexProgram::Compile(pattern.text, pattern.options);
    const auto scan = TextScan::BeginWith(1 + Below(4), perPiece, m_lent, program, order);
    ASSERT_TRUE(scan);
    ASSERT_EQ(Scanned(*scan), Plain(program, order))
        << pattern.text << (order.backward ? " backward" : "") << " from " << order.start;
  }

  // The hits of a load of the file in pieces of about so many bytes.
  std::vector<std::size_t> Loaded(LoadScan& scan, TrcWindow::Way way, std::uint64_t perPiece,
                                  const ScanOrder& order) {
    const Bytes file = m_file->View();
    TracePart all;
    for (std::uint64_t at = kTrcHeaderBytes; at < file.size();) {
      TracePart part(perPiece, *m_file, way);
      part.Search(scan);
      at = part.Walk(file, at, std::min<std::uint64_t>(at + perPiece, file.size()),
                     [](std::uint64_t) { return true; });
      scan.Take(*part.SearchPiece(), all.traces.size());
      all.Append(part);
    }
    std::vector<std::size_t> places;
    LoadScan::Walk walk(scan, order);
    while (const ScanHit* const hit = walk.Next()) {
      EXPECT_TRUE(hit->IsSure());
      places.push_back(hit->Place());
    }
    return places;
  }

  std::mt19937 m_random{11};
  TempDir m_dir;
  std::shared_ptr<const MappedFile> m_file;
  TraceList_t m_traces;
  std::shared_ptr<const LentTraces> m_lent;
  RegexMatcher m_matcher;
};

TEST_F(TextScanTest, FindsTheTracesThatMatchInTheOrderOfTheSearch) {
  for (int round = 0; round < 12; ++round) {
    Open(RandomImage(1 + Below(400)));
    for (const Pattern& pattern : kPatterns)
      for (const bool backward : {false, true})
        for (const bool wraps : {false, true})
          ExpectAll(pattern, {Below(m_traces.size()), backward, wraps},
                    std::vector<std::size_t>{1, 7, 100, 100000}[Below(4)]);
  }
}

TEST_F(TextScanTest, ReadsAFileThatIsCutAtAnyByteAsFarAsItGoes) {
  const TrcImage whole = RandomImage(30);
  for (std::size_t cut = 1; cut < 150; ++cut) {
    TrcImage image = whole;
    Open(image.Cut(cut));
    for (const Pattern& pattern : kPatterns) ExpectAll(pattern, {}, 10);
  }
}

TEST_F(TextScanTest, ALoadFindsTheSameTracesInItsWindows) {
  for (int round = 0; round < 8; ++round) {
    TrcImage image = RandomImage(1 + Below(400));
    // Windows end in records, and there are several of them.
    for (int i = 0; i < 20; ++i)
      image.Trace({.text = std::string(60'000 + Below(5000), 'x') + "cart", .stack = RandomText()});
    if (round % 2) image.Cut(Below(70'000));
    Open(image);
    for (const Pattern& pattern : kPatterns) {
      const RegexProgram program = RegexProgram::Compile(pattern.text, pattern.options);
      const ScanOrder order{Below(m_traces.size()), Below(2) == 0, false};
      const std::uint64_t perPiece = std::vector<std::uint64_t>{1, 500, 5'000'000}[Below(3)];
      for (const auto way : {TrcWindow::Way::Copy, TrcWindow::Way::View}) {
        LoadScan scan(program);
        ASSERT_EQ(Loaded(scan, way, perPiece, order), Plain(program, order)) << pattern.text;
      }
    }
  }
}

TEST_F(TextScanTest, ATextThatTakesLongIsGivenAsOneThatMayMatch) {
  TrcImage image;
  image.Trace("short").Trace({.text = std::string(60000, 'x') + "zy"}).Trace("xy");
  Open(image);
  const RegexProgram program =
      RegexProgram::Compile("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", RegexOptions{});
  const auto scan = TextScan::BeginWith(2, 1, m_lent, program, {});
  std::vector<std::pair<std::size_t, bool>> found;
  for (TextScan::State state{}; state != TextScan::State::Over;) {
    state = scan->Next(std::chrono::seconds(10));
    ASSERT_NE(state, TextScan::State::NotYet);
    if (state == TextScan::State::Found) found.emplace_back(scan->Place(), scan->IsSure());
  }
  EXPECT_EQ(found, (std::vector<std::pair<std::size_t, bool>>{{1, false}, {2, true}}));
}

TEST_F(TextScanTest, TheFirstHitComesBeforeTheWholeFileIsRead) {
  TrcImage image;
  for (int i = 0; i < 2000; ++i) image.Trace("cart");
  Open(image);
  const RegexProgram program = RegexProgram::Compile("cart", kLiteral);
  const auto scan = TextScan::BeginWith(1, 1, m_lent, program, {.start = 900, .backward = true});
  ASSERT_EQ(scan->Next(std::chrono::seconds(10)), TextScan::State::Found);
  EXPECT_EQ(scan->Place(), 900u);
  ASSERT_EQ(scan->Next(std::chrono::seconds(10)), TextScan::State::Found);
  EXPECT_EQ(scan->Place(), 899u);
}

TEST_F(TextScanTest, NoFewTracesAreScannedByThreads) {
  Open(RandomImage(100));
  const RegexProgram program = RegexProgram::Compile("cart", kLiteral);
  EXPECT_EQ(TextScan::Begin(m_lent, program, {}), nullptr);
  EXPECT_EQ(TextScan::Begin(nullptr, program, {}), nullptr);
}

TEST(ScanPieces, HaveEachTraceOnceInTheOrderOfTheSearch) {
  for (std::size_t size = 1; size < 12; ++size)
    for (std::size_t start = 0; start < size; ++start)
      for (std::size_t perPiece = 1; perPiece < 14; ++perPiece)
        for (const bool backward : {false, true}) {
          const ScanPieces pieces(size, {start, backward, true}, perPiece);
          std::vector<std::size_t> order;
          for (std::size_t piece = 0; piece < pieces.Count(); ++piece) {
            const auto [from, end] = pieces.At(piece);
            ASSERT_LE(end - from, perPiece);
            for (std::size_t i = from; i < end; ++i)
              order.push_back(backward ? end - 1 - (i - from) : i);
          }
          ASSERT_EQ(order.size(), size);
          for (std::size_t i = 0; i < size; ++i)
            ASSERT_EQ(order[i], backward ? (start + size - i) % size : (start + i) % size);
        }
}

}  // namespace
