// What trc setup takes from the command line.
#include <algorithm>

#include "commands/commands.h"
#include "live/setup.h"
#include "quor/settings/settings_words.h"
#include "usage.h"

namespace {

class SetupCommand final : public Command {
 public:
  explicit SetupCommand(CLI::App& program)
      : Command(program, "setup", "Do what the wizard does, for one machine or several") {
    App().footer(
        "The settings of the chosen applications are the preset's, the file's, or stay as\n"
        "they are. They are in force as long as the application runs; when it does not\n"
        "run, the next instance that starts receives them. The file's sinks are not used.\n"
        "Exit status 0: all of it was done. 1: an application or a trace was not there.\n"
        "2: wrong use, a bad file, or a machine that could not be configured.\n"
        "\n"
        "Examples:\n"
        "  trc setup --preset support\n"
        "  trc setup --app orders --preset max --monitor\n"
        "  trc setup orders.tcf --dry-run\n"
        "  trc setup --machine orders1:7447 --machine localhost --app orders --preset off");
    m_file = App().add_option("FILE", m_setup.file, "A .tcf file: its applications and settings");
    m_file->type_name("");
    AddList("-m,--machine", m_setup.machines,
            "name or name:port, any number of them [default: this machine]", "MACHINE");
    App().add_flag("-s,--same", m_setup.same,
                   "All machines get what is chosen for the first one, by name");
    AddList("-a,--app", m_setup.apps,
            "This application, any number of them [default: all that are registered there, or all "
            "of FILE]",
            "APP");
    App()
        .add_option("-p,--preset", m_preset, "off, support, developer or max, for all traces")
        ->check(OneOf({"off", "support", "developer", "max"}))
        ->type_name("PRESET")
        ->excludes(m_file);
    App().add_flag("--monitor", m_setup.monitor, "Then print the traces of this machine, as tail");
    App().add_flag("-n,--dry-run", m_setup.dryRun, "Say what would be done, and change nothing");
  }
  void Complete() override {
    if (m_file->count() != 0 && m_setup.file.empty())
      throw CLI::ValidationError("setup", "the name of the file is empty");
    // It more likely is a variable of a script that is not set.
    const auto& machines = m_setup.machines;
    if (std::find(machines.begin(), machines.end(), "") != machines.end())
      throw CLI::ValidationError("setup", "the name of a machine is empty");
    if (!m_preset.empty()) m_setup.preset = SettingsOf(m_preset);
  }
  int Run() const override { return RunSetup(m_setup); }

 private:
  void AddList(const char* names, std::vector<std::string>& list, const char* help,
               const char* type) {
    App()
        .add_option_function<std::string>(
            names, [&list](const std::string& word) { list.push_back(word); }, help)
        ->trigger_on_parse()
        ->type_name(type);
  }

  SetupOptions m_setup;
  CLI::Option* m_file = nullptr;
  std::string m_preset;
};

}  // namespace

std::unique_ptr<Command> MakeSetup(CLI::App& program) {
  return std::make_unique<SetupCommand>(program);
}
