// What trc notes takes from the command line.
#include "commands/commands.h"
#include "commands/notes.h"
#include "usage.h"

namespace {

class NotesCommand final : public Command {
 public:
  explicit NotesCommand(CLI::App& program)
      : Command(program, "notes", "List the marks and notes of a trace file, or set them") {
    App()
        .add_option("FILE", m_notes.file, "A trace file, also a packed one")
        ->required()
        ->type_name("");
    App().add_flag("-j,--json", m_notes.json, "One JSON object per row");
    AddList("-m,--mark", m_marks, "Mark a trace with a colour from 1 to 9; 0 takes the mark away",
            "INDEX=COLOUR");
    AddList("-n,--note", m_texts, "Write a note at a trace; an empty one takes it away",
            "INDEX=TEXT");
    App().add_flag("--replace", m_notes.replace,
                   "Replace the notes of another trace file, or what another program has written");
    App().footer(
        "The notes are in FILE.notes beside the file, which is never changed itself. They\n"
        "are found when both files are moved, when the file has grown, and when it was\n"
        "cut: rows that are not there now are kept as \"beyond the end\". Those of another\n"
        "file are \"stale\" and apply to nothing.\n"
        "--where knows them as 'marked' and 'note'.\n"
        "Exit status: 0 there are some, or they are written; 1 there are none; 2 a wrong\n"
        "file.\n"
        "\n"
        "Examples:\n"
        "  trc notes web.trc --mark 12=3 --note 12='the first retry'\n"
        "  trc notes web.trc\n"
        "  trc dump web.trc --where 'marked in {1..3} or note' --context 5");
  }
  void Complete() override {
    if (m_notes.file == "-")
      throw CLI::ValidationError("FILE", "standard input has no notes beside it");
    for (const std::string& mark : m_marks) {
      const auto [place, colour] = Divided("--mark", mark);
      const std::uint64_t number = ReadNumber("--mark", colour);
      RefuseOutside("--mark", number, 0, kMarkColours);
      m_notes.marks.emplace_back(place, static_cast<std::uint8_t>(number));
    }
    for (const std::string& text : m_texts) m_notes.notes.push_back(Divided("--note", text));
  }
  int Run() const override { return RunNotes(m_notes); }

 private:
  void AddList(const char* names, std::vector<std::string>& list, const char* help,
               const char* type) {
    App().add_option(names, list, help)->allow_extra_args(false)->type_name(type);
  }
  static std::pair<std::uint64_t, std::string> Divided(const char* option,
                                                       const std::string& text) {
    const std::size_t sign = text.find('=');
    if (sign == text.npos)
      throw CLI::ValidationError(option, "needs the index of a trace and \"=\": 12=3");
    return {ReadNumber(option, text.substr(0, sign)), text.substr(sign + 1)};
  }

  NotesOptions m_notes;
  std::vector<std::string> m_marks, m_texts;
};

}  // namespace

std::unique_ptr<Command> MakeNotes(CLI::App& program) {
  return std::make_unique<NotesCommand>(program);
}
