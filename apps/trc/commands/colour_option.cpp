#include "commands/colour_option.h"

#include "filter/where_option.h"
#include "text/visible_text.h"
#include "where/colours/shipped_colours.h"

namespace {

constexpr const char* kName = "--colour-rules";

std::optional<ColourRules> RulesOf(const std::string& said, std::string* why) {
  if (said == "light") return ShippedColours(ColourGround::Light);
  if (said == "dark") return ShippedColours(ColourGround::Dark);
  return LoadColourRules(said, why);
}

}  // namespace

void AddColourRules(CLI::App& app, std::optional<std::string>& path) {
  app.add_option(kName, path,
                 "Lines in the colours of the first rule of this file that holds for them, where "
                 "--color lets colours show; light and dark are sets that come with the program")
      ->type_name("FILE|light|dark");
}

ColourProgramPtr ReadColourOption(const std::optional<std::string>& path, DumpFormat format,
                                  bool coloured) {
  if (!path) return nullptr;
  if (format != DumpFormat::Text)
    throw CLI::ValidationError(kName, "goes with the text format only");
  std::string why;
  std::optional<ColourRules> rules = RulesOf(*path, &why);
  if (!rules) throw CLI::ValidationError(kName, VisibleText(why));
  ColourProgramPtr program = ColourProgram::Compile(std::move(*rules));
  for (std::size_t i = 0; i < program->Rules().size(); ++i) {
    const ColourRule& rule = program->Rules()[i];
    if (rule.on && program->ErrorOf(i))
      throw CLI::ValidationError(kName, VisibleText(*path) + ": \"" + rule.name + "\": " +
                                            WhereErrorText(rule.where, *program->ErrorOf(i)));
  }
  return coloured ? program : nullptr;
}
