// What trc filter takes from the command line.
#include "commands/commands.h"
#include "commands/filter.h"
#include "filter/filter_options.h"
#include "filter/where_option.h"

namespace {

class FilterCommand final : public Command {
 public:
  explicit FilterCommand(CLI::App& program)
      : Command(program, "filter", "Check a filter text, and write filter options as one") {
    App()
        .add_option("FILE", m_filter.files,
                    "Trace files whose names the options are about; - is standard input. Without "
                    "one, only what needs no names")
        ->type_name("");
    AddFilterOptions(&App(), m_filter.filter);
    App()
        .add_option_function<std::string>(
            "--where",
            [this](const std::string& text) {
              if (std::string why; !AddWhere(m_filter.where, text, &why))
                throw CLI::ValidationError("--where", why);
            },
            "A filter text; may be repeated")
        ->trigger_on_parse()
        ->type_name("TEXT");
    App().add_flag("--paths", m_filter.paths,
                   "Print the options --uncheck and --check that choose the same traces");
    App().add_flag("--live", m_filter.live,
                   "For traces that still come: new components, machines and so on are shown, as "
                   "the Filter dialog does");
    App().footer(
        "Without --paths one filter text in its normal form is printed, which chooses\n"
        "what all the options do; an empty one chooses all. With --paths the options are\n"
        "printed for a shell, one a line. A wrong text is shown with its place. Of a text\n"
        "that no tree of the Filter dialog says, the place and the reason are shown.\n"
        "Exit status: 0 it was printed, 1 there is none, 2 a wrong text, path or file.\n"
        "\n"
        "Examples:\n"
        "  trc filter --where 'not (severity != error and severity != warn)'\n"
        "  trc filter web.trc --uncheck \"All Components/Cache\"\n"
        "  trc filter web.trc --where 'severity >= warn and not developer' --paths");
  }
  int Run() const override { return RunFilter(m_filter); }

 private:
  FilterOptions m_filter;
};

}  // namespace

std::unique_ptr<Command> MakeFilter(CLI::App& program) {
  return std::make_unique<FilterCommand>(program);
}
