// What trc stack takes from the command line.
#include "commands/commands.h"
#include "commands/shared_options.h"
#include "commands/stack.h"

namespace {

class StackCommand final : public Command {
 public:
  explicit StackCommand(CLI::App& program)
      : Command(program, "stack", "Print the call stacks of a file's traces, with function names") {
    App()
        .add_option("FILE", m_stack.files,
                    "Trace files, also packed ones; - reads the text of one stack from standard "
                    "input")
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
    m_shared.Add({.columns = "stacks have no columns",
                  .context = "what stands beside a trace with a stack may have none",
                  .follow = kNotFollowed});
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
  void Complete() override { m_shared.Complete(); }
  int Run() const override { return RunStack(m_stack); }

 private:
  StackOptions m_stack;
  SharedOptions m_shared{App(), m_stack.traces};
};

}  // namespace

std::unique_ptr<Command> MakeStack(CLI::App& program) {
  return std::make_unique<StackCommand>(program);
}
