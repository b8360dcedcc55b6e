#include "commands/filter.h"

#include "base/fail_with.h"
#include "filter/tree_steps.h"
#include "filter/where_option.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/output.h"
#include "text/visible_text.h"
#include "tree/filter/text/filter_of_text.h"
#include "tree/filter/text/filter_text.h"
#include "where/text/where_writer.h"

namespace {

// The text of the tree and of --where.
bool AddText(const CTraceFilter& filter, const FilterNames& names, const WhereProgramPtr& where,
             Output& output, std::string* why) {
  const auto tree = TextOfFilter(filter, names, why);
  if (!tree) return false;
  WhereProgramPtr both;
  if (!AddWhere(both, *tree, why)) return false;
  if (where && !AddWhere(both, where->Text(), why)) return false;
  std::string text;
  if (both) text = WhereText(both->Expr());
  output.Line(text);
  return true;
}

bool AddPaths(CTraceDoc& document, CTraceFilter filter, const FilterNames& names,
              const WhereProgramPtr& where, Output& output, std::string* why) {
  if (where) {
    WhereError error;
    // Parsed again: the places of several texts are in the text of them all.
    const auto expr = ParseWhere(where->Text(), error);
    if (!expr || !FilterOfText(*expr, names, filter, error))
      return FailWith(why, WhereErrorText(where->Text(), error));
  }
  const auto steps = TreeSteps(document, filter, why);
  if (!steps) return false;
  for (const std::string& step : *steps) output.Line(step);
  return true;
}

int Print(const FilterOptions& options, CTraceDoc& document, bool mayGrow) {
  CTraceFilter filter;
  Output output;
  std::string why;
  if (!options.filter.Apply(document, filter, &why)) {
    PrintError(why);
    return kExitBad;
  }
  const FilterNames names{document.m_names, mayGrow};
  const bool said = options.paths
                        ? AddPaths(document, std::move(filter), names, options.where, output, &why)
                        : AddText(filter, names, options.where, output, &why);
  if (!said) PrintError(why);
  const int status = output.Finish();
  return said ? status : kExitNo;
}

}  // namespace

int RunFilter(const FilterOptions& options) {
  TerminalHost host;
  if (options.files.empty()) {
    CTraceDoc document(host);
    return Print(options, document, true);
  }
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();
  const int status = Print(options, input.Document(), options.live);
  return status == kExitGood ? input.StatusOfAnswer(status) : status;
}
