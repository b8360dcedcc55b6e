// Which of 40 colour rules holds for the traces of a page, at first sight of the page and when it
// comes back, beside the making of the page's cells.
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "listview/cells/cell_text.h"
#include "where/colours/colour_judge.h"

namespace {

constexpr std::size_t kRules = 40, kPageRows = 60, kPages = 200;
constexpr double kMostMilliseconds = 1;

// Most hold for no trace, so most traces are put to all of them. Ids, numbers, texts, and in one of
// eight an expression.
ColourProgramPtr FortyRules() {
  const char* const kTexts[] = {
      "component == Absent%",        "category == Absent% and severity == error",
      "text contains \"absent %\"",  "delta > 9%s",
      "line in {7000%..7100%}",      "tid == absent% or pid == absent%",
      "file startswith \"absent%\"", "text matches \"absent[0-9]+ %$\""};
  ColourRules rules;
  while (rules.size() < kRules) {
    std::string text = kTexts[rules.size() % std::size(kTexts)];
    const std::string number = std::to_string(rules.size());
    for (std::size_t at = 0; (at = text.find('%', at)) != text.npos;) text.replace(at, 1, number);
    rules.push_back({"rule " + number, text, {}, {0xff, 0xff, 0xff}});
  }
  ColourProgramPtr program = ColourProgram::Compile(rules);
  for (std::size_t i = 0; i < kRules; ++i) {
    if (program->ProgramOf(i)) continue;
    std::fprintf(stderr, "%s: no filter text\n", program->Rules()[i].where.c_str());
    std::exit(2);
  }
  return program;
}

// The pages lie all over the file.
template <class Visit>
void ForEachRow(const CTraceDoc& document, Visit visit) {
  const std::size_t apart = document.m_traces.size() / kPages;
  for (std::size_t page = 0; page < kPages; ++page)
    for (std::size_t row = 1; row <= kPageRows; ++row) visit(page * apart + row);
}

std::size_t MakeCells(const CTraceDoc& document) {
  std::size_t bytes = 0;
  ForEachRow(document, [&](std::size_t place) {
    for (const Column column :
         {Column::Application, Column::Component, Column::Category, Column::Time, Column::Trace})
      bytes += CellText(column, *document.m_traces[place], document.m_traces[place - 1],
                        document.m_names, true)
                   .size();
  });
  return bytes;
}

std::size_t AskRules(const CTraceDoc& document, ColourJudge& judge) {
  std::size_t coloured = 0;
  ForEachRow(document, [&](std::size_t place) {
    if (place % kPageRows == 1) judge.BeginPage({});
    const auto before = [&]() -> std::optional<WherePrevious> {
      return WherePrevious(RawTrace(document.m_traces[place - 1]->Record()));
    };
    coloured += judge.Of(*document.m_traces[place], before).rule != nullptr;
  });
  return coloured;
}

void Report(const std::string& what, const Measured& measured) {
  const double milliseconds = measured.seconds * 1000 / kPages;
  PrintRow(what, milliseconds, "ms/page", measured.floorSeconds * 1000 / kPages, milliseconds,
           kMostMilliseconds);
  std::printf("  %.2f of the making of its cells\n", measured.ratio);
}

}  // namespace

int main(int, char** arguments) {
  SampleDocument sample(arguments[0]);
  CTraceFileDoc& document = sample.document;
  ColourJudge judge(FortyRules(), document.m_names);
  std::size_t sum = 0;
  Report("40 colour rules, pages that are new", MeasureBeside(
                                                    9, [&] { sum += MakeCells(document); },
                                                    [&] {
                                                      // Not what was learned of the names: a list
                                                      // goes on with that.
                                                      ForEachRow(document, [&](std::size_t place) {
                                                        judge.Forget(document.m_traces[place]);
                                                      });
                                                      sum += AskRules(document, judge);
                                                    }));
  ColourJudge known(FortyRules(), document.m_names);
  Report("40 colour rules, the first page of a list", MeasureBeside(
                                                          9, [&] { sum += MakeCells(document); },
                                                          [&] {
                                                            known.ForgetAll();
                                                            sum += AskRules(document, known);
                                                          }));
  return sum == 0 ? 2 : 0;
}
