// What a reader does with a large file: hits that are counted and listed, rows that are copied, and
// the way to a time.
#include <QApplication>

#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "listview/columns/columns.h"
#include "listview/copy/copy_work.h"
#include "listview/rows/trace_view.h"
#include "listview/rows/ui/trace_rows.h"
#include "shell/goto/shown_traces.h"
#include "tree/find/count/hit_count.h"

namespace {

constexpr int kTurns = 5, kPage = 40, kCopied = 100'000;
constexpr const char* kWanted = "snapshot";

class AllRows final : public CountedRows {
 public:
  explicit AllRows(const TraceList_t& list) : m_list(list) {}
  int CountedSize() const override { return static_cast<int>(m_list.size()); }
  const TraceEvent_i* CountedAt(int row) const override {
    return m_list[static_cast<std::size_t>(row)];
  }

 private:
  const TraceList_t& m_list;
};

std::size_t Search(CTraceDoc& document, const RegexProgram& program) {
  const auto scan = TextScan::Begin(document.Lend(), program, {});
  std::size_t hits = 0;
  for (TextScan::State state{}; scan && state != TextScan::State::Over;) {
    state = scan->Next(std::chrono::seconds(10));
    if (state == TextScan::State::Failed) std::exit(2);
    if (state == TextScan::State::Found) ++hits;
  }
  return hits;
}

std::string Cells(const CTraceDoc& document, std::size_t row) {
  std::string all;
  const TraceEvent_i* const above = row > 0 ? document.m_traces[row - 1] : nullptr;
  for (const ColumnInfo& info : kColumns) {
    all += CellText(info.column, *document.m_traces[row], above, document.m_names, false);
    all += '\t';
  }
  return all;
}

void Hits(CTraceDoc& document) {
  const RegexProgram program = RegexProgram::Compile(kWanted, {.ignoreCase = true});
  std::size_t found = 0;
  std::unique_ptr<HitCount> count;
  const Measured counted = MeasureBeside(
      kTurns, [&] { found = Search(document, program); },
      [&] {
        count = std::make_unique<HitCount>(document, std::make_unique<AllRows>(document.m_traces),
                                           program);
        while (count->Step(std::chrono::milliseconds(100))) {
        }
      });
  PrintRow("hits counted / the search alone", counted.seconds * 1e3, "ms",
           counted.floorSeconds * 1e3, counted.ratio, 1.5);
  std::printf("  %d hits, the search %zu\n", count->Count(), found);
  if (count->Count() < kPage) return;
  std::size_t bytes = 0;
  int place = 0;
  const Measured listed = MeasureBeside(
      101,
      [&] {
        for (int i = 0; i < kPage; ++i) {
          place = static_cast<int>((place + 999'983LL) % count->Count());
          bytes += Cells(document, static_cast<std::size_t>(place)).size();
        }
      },
      [&] {
        for (int i = 0; i < kPage; ++i) {
          place = static_cast<int>((place + 999'983LL) % count->Count());
          bytes += Cells(document, static_cast<std::size_t>(count->RowOf(place))).size();
        }
      });
  PrintRow("a page of the list of hits / its cells", listed.seconds * 1e6, "us",
           listed.floorSeconds * 1e6, listed.ratio, 1.5);
  if (bytes == 0) std::exit(2);
}

class FirstTraces final : public CopiedTraces {
 public:
  FirstTraces(const TraceList_t& list, int count) : m_list(list), m_count(count) {}
  void Rewind() override { m_next = 0; }
  bool Next(CopiedTrace& trace) override {
    if (m_next == m_count) return false;
    const auto place = static_cast<std::size_t>(m_next);
    trace = {m_list[place], place > 0 ? m_list[place - 1] : nullptr, m_next};
    ++m_next;
    return true;
  }
  int Progress() const override { return 0; }
  std::vector<Column> Columns() const override {
    std::vector<Column> all;
    for (const ColumnInfo& info : kColumns) all.push_back(info.column);
    return all;
  }

 private:
  const TraceList_t& m_list;
  const int m_count;
  int m_next = 0;
};

void Copies(const CTraceDoc& document) {
  const int rows = std::min(kCopied, static_cast<int>(document.m_traces.size()));
  constexpr std::pair<CopyForm, const char*> kForms[] = {{CopyForm::Text, "text"},
                                                         {CopyForm::Tabs, "tabs"},
                                                         {CopyForm::Csv, "CSV"},
                                                         {CopyForm::Json, "JSON"}};
  for (const auto& [form, name] : kForms) {
    std::size_t plain = 0, copied = 0;
    const Measured measured = MeasureBeside(
        kTurns,
        [&] {
          std::string text;
          for (int row = 0; row < rows; ++row)
            text += Cells(document, static_cast<std::size_t>(row));
          plain = text.size();
        },
        [&] {
          FirstTraces traces(document.m_traces, rows);
          CopyWork work(document, traces, form, true);
          while (!work.DoPart()) {
          }
          if (work.GetResult() != CopyWork::Result::Whole) std::exit(2);
          copied = work.Text().size();
        });
    PrintRow("Copy Rows As " + std::string(name) + ", " + std::to_string(rows) + " / their cells",
             measured.seconds * 1e3, "ms", measured.floorSeconds * 1e3, measured.ratio,
             form == CopyForm::Tabs ? 1.5 : 2.5);
    std::printf("  %zu bytes, the cells %zu\n", copied, plain);
  }
}

void Times(CTraceDoc& document) {
  CTraceView view(document, [](RowListOwner& owner) { return MakeTraceRows(owner); });
  view.OnInitialUpdate();
  const RawTrace last(document.m_traces.back()->Record());
  const std::int64_t moment = MomentOfStamp(StampOf(last)).value_or(0);
  std::uint64_t sum = 0;
  int row = -1;
  const Measured measured = MeasureBeside(
      kTurns,
      [&] {
        document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
          const RawTrace trace(event->Record());
          sum += trace.Date() + trace.Time();
        });
      },
      [&] {
        ShownTrace found;
        std::string none;
        if (FindTime(view, moment, found, none) != GoToResult::Found) std::exit(2);
        row = found.row;
      });
  PrintRow("Go to Time, the last of the file / reading times", measured.seconds * 1e3, "ms",
           measured.floorSeconds * 1e3, measured.ratio, 3.0);
  std::printf("  row %d, check %llu\n", row, static_cast<unsigned long long>(sum % 10));
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  SampleDocument sample(argv[0]);
  Hits(sample.document);
  Copies(sample.document);
  Times(sample.document);
  return 0;
}
