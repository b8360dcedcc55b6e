// What trc stats takes from the command line.
#include <sstream>

#include "base/near/near_word.h"
#include "base/text.h"
#include "commands/commands.h"
#include "commands/shared_options.h"
#include "commands/stats.h"
#include "usage.h"

namespace {

constexpr std::pair<const char*, StatColumn> kSortWords[] = {
    {"count", StatColumn::Count}, {"value", StatColumn::Value}, {"rate", StatColumn::Rate},
    {"first", StatColumn::First}, {"last", StatColumn::Last},
};

std::vector<StatField> ReadFields(const std::string& text) {
  std::vector<StatField> fields;
  std::istringstream parts(text + ",");
  for (std::string word; std::getline(parts >> std::ws, word, ',');) {
    word.erase(word.find_last_not_of(' ') + 1);
    if (const auto field = StatFieldOfWord(word)) {
      fields.push_back(*field);
      continue;
    }
    std::vector<std::string> known;
    for (const StatField field : kAllStatFields) known.emplace_back(WordOf(field));
    throw CLI::ValidationError(
        "--by", "traces are not counted by \"" + word + "\"" + DidYouMean(word, known) +
                    "; there are component, category, application, thread, severity and pattern");
  }
  return fields;
}

class StatsCommand final : public Command {
 public:
  explicit StatsCommand(CLI::App& program)
      : Command(program, "stats",
                "Count the traces of a file by component, pattern of the text ...") {
    AddFiles(m_stats.files);
    App()
        .add_option_function<std::string>(
            "--by", [this](const std::string& text) { m_stats.fields = ReadFields(text); },
            "component, category, application, thread, severity or pattern, several with commas "
            "[default: all]")
        ->type_name("LIST");
    App()
        .add_option("-s,--sort", m_sort, "count (the default), value, rate, first or last")
        ->check(OneOf({"count", "value", "rate", "first", "last"}))
        ->type_name("COLUMN");
    AddNumber("-t,--top", m_stats.top,
              "At most so many values of each, the first of the order; 0: all [default: 20; with "
              "--json all]");
    AddOverTime();
    App().add_flag("-j,--json", m_stats.json, "One JSON object per value or slice");
    m_shared.Add({.columns = "counts have no columns",
                  .context = "what stands beside a chosen trace is not counted",
                  .follow = kNotFollowed});
    App().footer(
        "For each value how many traces have it, their share of the chosen ones, how\n"
        "many a second come from the first to the last of them, and the times of these.\n"
        "The pattern of a text is what is left of it without numbers, words of\n"
        "hexadecimal digits and quoted parts: \"took # ms for \"...\"\". The key \"where\"\n"
        "of --json is the filter text that gives exactly these traces.\n"
        "\n"
        "Slices of time are equally wide and begin at round times: there are as many as\n"
        "fit. A few traces far away from all others, as those of a clock that was not\n"
        "set, are counted before or behind the slices.\n"
        "\n"
        "Examples:\n"
        "  trc stats web.trc\n"
        "  trc stats web.trc --by pattern --severity warn+ --top 10\n"
        "  trc stats web.trc --by component,thread --sort rate\n"
        "  trc stats web.trc --over-time 60 --component Sql\n"
        "  trc stats web.trc --by pattern --json | jq -r 'select(.count == 1) | .value'");
  }
  void Complete() override {
    m_shared.Complete();
    if (m_stats.json && App().count("--top") == 0) m_stats.top = 0;
    for (const auto& [word, column] : kSortWords)
      if (m_sort == word) m_stats.sortedBy = column;
  }
  int Run() const override { return RunStats(m_stats); }

 private:
  void AddOverTime() {
    App()
        .add_option("--over-time", m_stats.slices,
                    "Count in at most so many slices of time instead, by severity (2 to 2048)")
        ->check(CLI::Range(2, static_cast<int>(TimeSlices::kSlices)).description(""))
        ->excludes(App().get_option("--by"))
        ->excludes(App().get_option("--sort"))
        ->excludes(App().get_option("--top"))
        ->type_name("N");
  }

  StatsOptions m_stats;
  SharedOptions m_shared{App(), m_stats.traces};
  std::string m_sort = "count";
};

}  // namespace

std::unique_ptr<Command> MakeStats(CLI::App& program) {
  return std::make_unique<StatsCommand>(program);
}
