#include "commands/tree_command_line.h"

#include <algorithm>

#include "filter/filter_options.h"
#include "usage.h"

TreeParser::TreeParser(CLI::App& app)
    : m_app(app.add_subcommand("tree", "Print the traces of a file as a procedure tree")) {
  m_app->add_option("FILE", m_options.file, "A trace file")->required()->type_name("");
  m_app
      ->add_option("OUT", m_options.out,
                   "With --export: the text file; an existing one is replaced")
      ->type_name("");
  m_app->add_flag(
      "-x,--export", m_export,
      "Write the first machine to OUT, as the desktop's Export writes it with all open");
  m_app->add_option("-m,--machine", m_options.machine, "Only the machine of this name")
      ->type_name("NAME");
  m_app
      ->add_option_function<std::string>(
          "-d,--depth",
          [this](const std::string& text) {
            m_options.depth =
                static_cast<int>(std::min<std::uint64_t>(ReadNumber("--depth", text), kAllLevels));
          },
          "Open so many levels only; 0 leaves the machines closed [default: all]")
      ->type_name("N");
  AddFilterOptions(m_app, m_options.filter);
  m_app->footer(
      "A line for each machine, application, process, thread, block (from \"Begin: \" to\n"
      "\"End: \") and trace, with the time that passed in processes, threads and blocks.\n"
      "A closed item with items below it begins with \"+- \".\n"
      "\n"
      "Examples:\n"
      "  trc tree web.trc --depth 4\n"
      "  trc tree web.trc --machine web-01 --uncheck \"All Severities/Info\"\n"
      "  trc tree --export web.trc tree.txt");
}

std::optional<TreeOptions> TreeParser::Chosen() {
  if (!m_app->parsed()) return std::nullopt;
  if (m_export && m_options.out.empty())
    throw CLI::ValidationError("--export", "needs OUT, the file to write");
  if (!m_export && !m_options.out.empty())
    throw CLI::ValidationError("OUT", "goes with --export only");
  if (m_export && (!m_options.machine.empty() || m_options.depth != kAllLevels))
    throw CLI::ValidationError("--export", "writes the first machine whole");
  return m_options;
}
