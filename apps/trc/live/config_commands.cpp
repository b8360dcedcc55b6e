// What trc config and its commands take from the command line.
#include "commands/commands.h"
#include "live/config_files.h"

namespace {

constexpr const char* kMachineHelp = "name or name:port [default: this machine]";

class ConfigPart : public Command {
 protected:
  using Command::Command;

  void AddFile(std::string& file, const char* help) {
    App().add_option("FILE", file, help)->required()->type_name("");
  }
  CLI::Option* AddMachine(std::string& machine, const char* help = kMachineHelp) {
    CLI::Option* const option = App().add_option("-m,--machine", machine, help);
    option->type_name("MACHINE");
    return option;
  }
};

class ConfigCheckCommand final : public ConfigPart {
 public:
  explicit ConfigCheckCommand(CLI::App& program)
      : ConfigPart(program, "check", "Read a file, and say what is wrong with it") {
    App().footer(
        "Exit status 0: the file is good. 2: it is not, or the machine cannot be reached;\n"
        "standard error has the reason, for a bad line with its number and its text.\n"
        "\n"
        "Examples:\n"
        "  trc config check orders.tcf\n"
        "  trc config check orders.tcf --machine orders1:7447");
    AddFile(m_check.file, "A .tcf file");
    m_option = AddMachine(m_machine, "Also name the applications and traces that it does not know");
  }
  void Complete() override {
    if (m_option->count() != 0) m_check.machine = m_machine;
  }
  int Run() const override { return RunConfigCheck(m_check); }

 private:
  ConfigCheckOptions m_check;
  std::string m_machine;
  CLI::Option* m_option = nullptr;
};

class ConfigShowCommand final : public ConfigPart {
 public:
  explicit ConfigShowCommand(CLI::App& program)
      : ConfigPart(program, "show", "Show the settings and sinks of a file or a machine") {
    App().footer(
        "Examples:\n"
        "  trc config show orders.tcf\n"
        "  trc config show --machine localhost --json");
    m_file = App().add_option("FILE", m_show.file, "A .tcf file");
    m_file->type_name("");
    m_machine = AddMachine(m_show.machine, "All applications that are registered there");
    App().add_flag("-j,--json", m_show.json, "One JSON array with an object for each application");
  }
  void Complete() override {
    if ((m_file->count() == 0) == (m_machine->count() == 0))
      throw CLI::ValidationError("show", "takes a FILE or --machine MACHINE");
    if (m_file->count() != 0 && m_show.file.empty())
      throw CLI::ValidationError("show", "the name of the file is empty");
  }
  int Run() const override { return RunConfigShow(m_show); }

 private:
  ConfigShowOptions m_show;
  CLI::Option* m_file = nullptr;
  CLI::Option* m_machine = nullptr;
};

class ConfigSaveCommand final : public ConfigPart {
 public:
  explicit ConfigSaveCommand(CLI::App& program)
      : ConfigPart(program, "save", "Save settings and sinks of applications to a file") {
    App().footer(
        "An existing file is replaced when the new one is complete.\n"
        "\n"
        "Examples:\n"
        "  trc config save all.tcf\n"
        "  trc config save orders.tcf orders --machine orders1:7447");
    AddFile(m_save.file, "The new .tcf file");
    App()
        .add_option("APP", m_save.apps, "These applications [default: all registered ones]")
        ->type_name("");
    AddMachine(m_save.machine);
  }
  int Run() const override { return RunConfigSave(m_save); }

 private:
  ConfigSaveOptions m_save;
};

class ConfigApplyCommand final : public ConfigPart {
 public:
  explicit ConfigApplyCommand(CLI::App& program)
      : ConfigPart(program, "apply", "Put a file in force on a machine") {
    App().footer(
        "All traces of the file's applications that it does not name are switched off. A\n"
        "file with a bad line changes nothing. Traces that an application does not have\n"
        "are told and passed over.\n"
        "\n"
        "Examples:\n"
        "  trc config apply orders.tcf\n"
        "  trc config apply orders.tcf --machine orders1:7447");
    AddFile(m_apply.file, "A .tcf file");
    AddMachine(m_apply.machine);
  }
  int Run() const override { return RunConfigApply(m_apply); }

 private:
  ConfigApplyOptions m_apply;
};

class ConfigDiffCommand final : public ConfigPart {
 public:
  explicit ConfigDiffCommand(CLI::App& program)
      : ConfigPart(program, "diff", "Print what would change from A to B, line by line") {
    App().footer(
        "A machine is compared as a file that is saved from it. A line behind \"-\" is only\n"
        "in A, one behind \"+\" only in B. The order of lines does not count.\n"
        "Exit status 0: no difference, 1: they differ, 2: one cannot be read.\n"
        "\n"
        "Examples:\n"
        "  trc config diff localhost orders.tcf\n"
        "  trc config diff orders.tcf all.tcf");
    const char* const help = "A .tcf file that exists, or else a machine";
    App().add_option("A", m_diff.before, help)->required()->type_name("");
    App().add_option("B", m_diff.after, help)->required()->type_name("");
  }
  // "" would be this machine; it more likely is a variable of a script that is not set.
  void Complete() override {
    if (m_diff.before.empty()) throw CLI::ValidationError("diff", "A is empty");
    if (m_diff.after.empty()) throw CLI::ValidationError("diff", "B is empty");
  }
  int Run() const override { return RunConfigDiff(m_diff); }

 private:
  ConfigDiffOptions m_diff;
};

class ConfigCommand final : public Command {
 public:
  explicit ConfigCommand(CLI::App& program)
      : Command(program, "config", "Check, show, save, apply or compare configurations") {
    App().require_subcommand(1);
    App().footer(
        "Examples:\n"
        "  trc config save orders.tcf orders\n"
        "  trc config diff localhost orders.tcf\n"
        "  trc config apply orders.tcf --machine orders1:7447\n"
        "\n"
        "'trc config COMMAND --help' describes a command.");
    Add<ConfigCheckCommand, ConfigShowCommand, ConfigSaveCommand, ConfigApplyCommand,
        ConfigDiffCommand>();
  }
  void Complete() override { Named().Complete(); }
  int Run() const override { return Named().Run(); }

 private:
  template <class... Parts>
  void Add() {
    (m_parts.push_back(std::make_unique<Parts>(App())), ...);
  }
  Command& Named() const {
    for (const auto& part : m_parts)
      if (part->IsNamed()) return *part;
    throw CLI::RequiredError("A subcommand is required", CLI::ExitCodes::RequiredError);
  }

  std::vector<std::unique_ptr<Command>> m_parts;
};

}  // namespace

std::unique_ptr<Command> MakeConfig(CLI::App& program) {
  return std::make_unique<ConfigCommand>(program);
}
