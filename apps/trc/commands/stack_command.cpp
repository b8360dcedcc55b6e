// What trc stack takes from the command line.
#include "commands/commands.h"
#include "commands/stack.h"
#include "filter/filter_options.h"

namespace {

class StackCommand final : public Command {
 public:
  explicit StackCommand(CLI::App& program)
      : Command(program, "stack", "Print the call stacks of a file's traces, with function names") {
    App()
        .add_option("FILE", m_stack.file,
                    "A trace file; - reads the text of one stack from standard input")
        ->required()
        ->type_name("");
    App()
        .add_option("-s,--symbols", m_stack.folders,
                    "A folder with separate debug information, or with programs and libraries "
                    "that are no longer where they were traced; may be repeated")
        ->allow_extra_args(false)
        ->type_name("DIR");
    App().add_flag("-r,--recorded", m_stack.recorded,
                   "Frames as they were recorded; reads no file");
    AddNumber("-b,--from", m_stack.from, "Index in the file of the first trace [default: 0]");
    AddNumber("-n,--count", m_stack.count, "At most so many stacks");
    AddFilterOptions(&App(), m_stack.filter);
    App().footer(
        "A traced program records where its frames are. The names come from the files of\n"
        "its modules, here: only files with the recorded build id count. They are looked\n"
        "for where they were traced, in the folders of --symbols and of QUOR_SYMBOLS,\n"
        "beside them, in /usr/lib/debug, and where debuginfod-find puts files. What is\n"
        "missing is said at the end.\n"
        "Exit status: 0 there are stacks, 1 no trace has one, 2 a wrong file.\n"
        "\n"
        "Examples:\n"
        "  trc stack web.trc --count 1\n"
        "  trc stack web.trc --from 1000 --count 1 --symbols build/bin\n"
        "  trc stack web.trc --uncheck \"All Severities/Info\"\n"
        "  trc dump web.trc --count 1 --format jsonl | jq -r .stack | trc stack -");
  }
  int Run() const override { return RunStack(m_stack); }

 private:
  StackOptions m_stack;
};

}  // namespace

std::unique_ptr<Command> MakeStack(CLI::App& program) {
  return std::make_unique<StackCommand>(program);
}
