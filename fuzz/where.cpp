// Any bytes as filter text: it becomes a tree that its own text gives again, or an error has its
// place inside the text; and what is offered at any caret can be read.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/text.h"
#include "where/complete/where_complete.h"
#include "where/steps/cell_step.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

// A normal form may be longer than what it was made of; so no bound is near.
constexpr std::size_t kShort = kWhereTextMax / 8;
// Each caret parses the text once for each of its completions: in longer texts only some are
// tried.
constexpr std::size_t kCarets = 8, kCompleted = 2000;

void Demand(bool holds) {
  if (!holds) std::abort();
}

std::size_t FirstByte(std::string_view text) {
  return text.empty() ? 0 : static_cast<unsigned char>(text.front());
}

void CheckTree(std::string_view text, const WhereExpr& expr) {
  Demand(expr.place + expr.length <= text.size());
  const std::string normal = WhereText(expr);
  Demand(IsUtf8(normal));
  if (text.size() > kShort) return;
  WhereError error;
  const auto again = ParseWhere(normal, error);
  Demand(again && *again == expr && WhereText(*again) == normal);
  Demand(WithStep(text, text) == normal);
}

void CheckError(std::string_view text, const WhereError& error) {
  Demand(error.place <= text.size() && error.length <= text.size() - error.place);
  Demand(!error.reason.empty() && error.reason.size() < 1000);
}

void CheckCompletions(std::string_view text) {
  // The bytes of the text itself as a name.
  const WhereNames names = [&](WhereField) {
    return std::vector<std::string>{"Sql", "two words", "\"", "4711", std::string(text)};
  };
  const std::size_t step = 1 + text.size() / kCarets;
  for (std::size_t caret = FirstByte(text) % step; caret <= text.size(); caret += step) {
    for (const WhereCompletion& one : WhereCompletions(text, caret, names)) {
      Demand(one.replaceFrom <= caret && caret <= one.replaceTo && one.replaceTo <= text.size());
      const std::string made = std::string(text.substr(0, one.replaceFrom)) + one.insert;
      WhereError error;
      Demand(ParseWhere(made, error) || error.place == made.size());
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  WhereError error;
  if (const auto expr = ParseWhere(text, error))
    CheckTree(text, *expr);
  else
    CheckError(text, error);
  if (size <= kCompleted) CheckCompletions(text);
  for (const WhereField field : {WhereField::Component, WhereField::Pid, WhereField::Count})
    if (const auto step = OnlyThis(field, text); step && size <= kShort)
      Demand(ParseWhere(*step, error).has_value());
  return 0;
}
