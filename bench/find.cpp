// Searching the texts of a file, compared with memmem over the same texts and with PCRE2-JIT.
#include <cstring>
#include <memory>

#include "base/mapped_file.h"
#include "bench/bench_host.h"
#include "bench/ratio.h"
#include "bench/sample_file.h"
#include "records/trace_list.h"
#include "records/trc_walk.h"
#include "tree/find/find_search.h"
#include "tree/find/scan/text_scan.h"
#include "tree/regex/regex.h"
#ifdef TESSERA_BENCH_PCRE2
#include "bench/pcre2_peer.h"
#endif

namespace {

constexpr int kTurns = 5;
// So few that the box of a search would not open.
constexpr std::size_t kTextsPerSearch = 100000;
constexpr double kMostOfMemmem = 1.5, kMostOfPeer = 2.0, kMostOfScan = 0.5;

struct Texts {
  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }

  template <class Test>
  std::size_t Count(Test test) const {
    std::size_t hits = 0;
    traces.ForEach(0, [&](TraceEvent_i* event) { hits += test(RawTrace(event->Record()).Text()); });
    return hits;
  }
  TraceList_t traces;
};

// A view's walk over some of the texts.
class SomeTexts final : public FindWalk {
 public:
  SomeTexts(const TraceList_t& traces, std::size_t from, std::size_t count)
      : m_traces(traces), m_next(from), m_end(std::min(from + count, traces.size())) {}
  std::optional<std::string_view> NextText() override {
    if (m_next == m_end) return std::nullopt;
    return RawTrace(m_traces[m_next++]->Record()).Text();
  }

 private:
  const TraceList_t& m_traces;
  std::size_t m_next, m_end;
};

std::size_t CountMemmem(const Texts& texts, std::string_view wanted) {
  return texts.Count([wanted](std::string_view text) {
    return memmem(text.data(), text.size(), wanted.data(), wanted.size()) != nullptr;
  });
}

std::size_t CountOurs(const Texts& texts) {
  return texts.Count([](std::string_view text) { return RegexMatchText(text) != 0; });
}

void Report(const std::string& what, const Texts& texts, const Measured& measured, double target,
            std::size_t hits, std::size_t floorHits) {
  const double perText = 1e9 / static_cast<double>(texts.traces.size());
  PrintRow(what, measured.seconds * perText, "ns/text", measured.floorSeconds * perText,
           measured.ratio, target);
  std::printf("  %zu of %zu texts%s\n", hits, texts.traces.size(),
              hits == floorHits ? "" : ", NOT THE SAME AS THE FLOOR'S");
}

void Prepare(const char* pattern, int ignoreCase, int literal, int word) {
  if (RegexPrepare(pattern, ignoreCase, literal, word, 0)) return;
  std::fprintf(stderr, "not a pattern: %s\n", pattern);
  std::exit(2);
}

void BesideMemmem(const Texts& texts, const char* wanted) {
  Prepare(wanted, 0, 1, 0);
  std::size_t hits = 0, floorHits = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { floorHits = CountMemmem(texts, wanted); }, [&] { hits = CountOurs(texts); });
  Report("literal \"" + std::string(wanted) + "\" / memmem", texts, measured, kMostOfMemmem, hits,
         floorHits);
}

// Everything that Find Next does for a text that no row contains.
void WholeSearch(const Texts& texts, const char* wanted) {
  Prepare(wanted, 0, 1, 0);
  BenchHost host;
  std::size_t floorHits = 0;
  bool complete = true;
  const Measured measured = MeasureBeside(
      kTurns, [&] { floorHits = CountMemmem(texts, wanted); },
      [&] {
        for (std::size_t from = 0; from < texts.traces.size(); from += kTextsPerSearch) {
          SomeTexts walk(texts.traces, from, kTextsPerSearch);
          complete &= RunSearch(host, nullptr, walk) == FindResult::NotFound;
        }
      });
  Report("search of a view, no hit / memmem", texts, measured, kMostOfMemmem, complete ? 0 : 1,
         floorHits);
}

// What trc find and Find in a list of a large file do ahead: all processors look through the file.
void ScanOfFile(const Texts& texts, const std::shared_ptr<const MappedFile>& file,
                const char* wanted, bool ignoreCase) {
  Prepare(wanted, ignoreCase, 1, 0);
  const auto lent = std::make_shared<LentTraces>(texts.traces, file);
  std::size_t hits = 0, floorHits = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { floorHits = CountMemmem(texts, wanted); },
      [&] {
        hits = 0;
        const auto scan = TextScan::Begin(lent, *RegexLastProgram(), {});
        if (!scan) std::exit(2);
        for (TextScan::State state{}; state != TextScan::State::Over;) {
          state = scan->Next(std::chrono::seconds(10));
          if (state == TextScan::State::Failed) std::exit(2);
          if (state == TextScan::State::Found) ++hits;
        }
      });
  Report(std::string("scan of the file, ") + (ignoreCase ? "any case" : "literal") + " / memmem",
         texts, measured, kMostOfScan, hits, floorHits);
}

struct Expression {
  const char* what;
  const char* ours;
  const char* theirs;
  int ignoreCase = 0, literal = 0, word = 0;
};

constexpr Expression kExpressions[] = {
    {"literal", "snapshot", "snapshot", 0, 1},
    {"literal, no hit", "mandatory", "mandatory", 0, 1},
    {"ignoring case", "SNAPSHOT", "SNAPSHOT", 1, 1},
    {"ignoring case, no hit", "MANDATORY", "MANDATORY", 1, 1},
    {"[0-9]+", "[0-9]+", "[0-9]+"},
    {"[{}]+, no hit", "[{}]+", "[{}]+"},
    {"^order", "^order", "^order"},
    {"^[A-Z][a-z]+: ", "^[A-Z][a-z]+: ", "^[A-Z][a-z]+: "},
    {"word", "cart", "(?<![A-Za-z0-9_])cart(?![A-Za-z0-9_])", 0, 1, 1},
    {"[a-z]+ [0-9]+ taken", "[a-z]+ [0-9]+ taken", "[a-z]+ [0-9]+ taken"},
    {"hit.*rate [0-9]*", "hit.*rate [0-9]*", "hit.*rate [0-9]*"},
    {".*webp", ".*webp", ".*webp"},
    {"client 10[.][0-9.]+:2", "client 10[.][0-9.]+:2", "client 10[.][0-9.]+:2"},
    {"[A-Z][a-z]+ [A-Z][a-z]*$", "[A-Z][a-z]+ [A-Z][a-z]*$", "[A-Z][a-z]+ [A-Z][a-z]*$"},
    {"[a-z]*[0-9]+[a-f]+[0-9]+", "[a-z]*[0-9]+[a-f]+[0-9]+", "[a-z]*[0-9]+[a-f]+[0-9]+"},
};

#ifdef TESSERA_BENCH_PCRE2
// Lines end as in Find.
Pcre2Peer PeerOf(const Expression& wanted) {
  const std::unique_ptr<pcre2_compile_context, decltype(&pcre2_compile_context_free)> context(
      pcre2_compile_context_create(nullptr), &pcre2_compile_context_free);
  pcre2_set_newline(context.get(), PCRE2_NEWLINE_ANYCRLF);
  const std::uint32_t options = PCRE2_MULTILINE | (wanted.ignoreCase ? PCRE2_CASELESS : 0u);
  return Pcre2Peer(wanted.theirs, options, context.get());
}

void BesidePeer(const Texts& texts, const Expression& wanted) {
  Prepare(wanted.ours, wanted.ignoreCase, wanted.literal, wanted.word);
  const Pcre2Peer peer = PeerOf(wanted);
  std::size_t hits = 0, floorHits = 0;
  const Measured measured = MeasureBeside(
      kTurns,
      [&] { floorHits = texts.Count([&](std::string_view text) { return peer.Finds(text); }); },
      [&] { hits = CountOurs(texts); });
  Report(std::string(wanted.what) + " / PCRE2-JIT", texts, measured, kMostOfPeer, hits, floorHits);
}
#else
void BesidePeer(const Texts& texts, const Expression& wanted) {
  Prepare(wanted.ours, wanted.ignoreCase, wanted.literal, wanted.word);
  std::size_t hits = 0;
  const double seconds = Seconds([&] { hits = CountOurs(texts); });
  std::printf("%-46s %10.2f ns/text    %zu hits\n", wanted.what,
              seconds * 1e9 / static_cast<double>(texts.traces.size()), hits);
}
#endif

// A pattern that takes minutes for a text of 64 KiB: how long until a Cancel takes effect?
void Pathological() {
  Prepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0);
  const std::string text = std::string(65533, 'x') + "zy";
  double longest = 0;
  RegexAnswer answer = RegexAnswer::Unfinished;
  longest = Seconds([&] { answer = RegexBeginText(text, 50000); });
  for (int part = 0; part < 20 && answer == RegexAnswer::Unfinished; ++part)
    longest = std::max(longest, Seconds([&] { answer = RegexResumeText(text, 50000); }));
  std::printf("%-46s %10.2f ms longest part%s\n", "pathological pattern", longest * 1e3,
              answer == RegexAnswer::Unfinished ? ", cancellable" : "");
}

}  // namespace

int main(int, char** argv) {
  const std::shared_ptr<const MappedFile> file = MappedFile::Open(SampleFile(argv[0]));
  if (!file) return 2;
  Texts texts;
  WalkTrc(file->View(), texts);
  BesideMemmem(texts, "snapshot");
  BesideMemmem(texts, "mandatory");
  BesideMemmem(texts, "e");
  BesideMemmem(texts, "cart");
  WholeSearch(texts, "mandatory");
  ScanOfFile(texts, file, "snapshot", false);
  ScanOfFile(texts, file, "mandatory", false);
  ScanOfFile(texts, file, "mandatory", true);
#ifndef TESSERA_BENCH_PCRE2
  std::printf("PCRE2 is not installed: no ratios to it\n");
#endif
  for (const Expression& wanted : kExpressions) BesidePeer(texts, wanted);
  Pathological();
  return 0;
}
