#include "commands/import.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <memory>

#include "base/fail_with.h"
#include "base/text.h"
#include "import/lines/journal_lines.h"
#include "import/lines/json_lines.h"
#include "import/lines/regex_lines.h"
#include "import/lines/syslog_lines.h"
#include "records/trc_walk.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"

namespace {

// One input: a file, a pipe, or standard input.
class Input {
 public:
  explicit Input(const std::string& path)
      : m_name(path == "-" ? "standard input" : path),
        m_descriptor(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (m_descriptor < 0 || fstat(m_descriptor, &m_status) != 0)
      m_error = errno;
    else if (S_ISDIR(m_status.st_mode))
      m_error = EISDIR;
  }
  ~Input() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  const std::string& Name() const { return m_name; }
  int Descriptor() const { return m_descriptor; }
  int Error() const { return m_error; }
  bool IsFile() const { return S_ISREG(m_status.st_mode); }
  std::uint64_t Size() const { return IsFile() ? static_cast<std::uint64_t>(m_status.st_size) : 0; }
  // The latest moment of which it can speak.
  std::int64_t Latest() const { return IsFile() ? m_status.st_mtime : std::time(nullptr); }
  bool IsSameFile(const std::string& path) const {
    struct stat other;
    return IsFile() && stat(path.c_str(), &other) == 0 && other.st_dev == m_status.st_dev &&
           other.st_ino == m_status.st_ino;
  }

 private:
  std::string m_name;
  int m_descriptor;
  int m_error = 0;
  struct stat m_status = {};
};

class Import {
 public:
  Import(const ImportOptions& options, ImportZone zone)
      : m_options(options),
        m_clock({.zone = zone, .format = options.timeFormat}),
        m_fields(options.rules, m_clock) {}

  int Run() {
    std::string why;
    if (!MakeFormat(&why)) return Refuse("--regex: " + why);
    // Each is opened once: the bytes of a pipe come only once.
    std::vector<std::unique_ptr<Input>> inputs;
    for (const std::string& path : m_options.in) {
      const Input& input = *inputs.emplace_back(std::make_unique<Input>(path));
      if (input.Error() != 0) return Refuse(input.Name() + ": " + SystemReason(input.Error()));
      if (input.IsSameFile(m_options.out))
        return Refuse(m_options.out + ": it is the input, and would be lost");
    }
    CatchEndSignals();
    if (!m_parts.Begin(m_options.out, &why)) return Refuse(m_options.out + ": " + why);
    LogImport import(*m_format, m_fields, m_parts, m_options.join);
    for (const auto& input : inputs)
      if (const int status = Read(import, *input); status != kExitGood) return status;
    if (!m_parts.Finish(&why)) return Refuse(m_options.out + ": " + why);
    return Tell(import.Counts());
  }

 private:
  static int Refuse(const std::string& text) {
    PrintError(text);
    return kExitBad;
  }

  bool MakeFormat(std::string* why) {
    switch (m_options.form) {
      case ImportForm::Jsonl:
        m_format = std::make_unique<JsonLines>(m_fields, m_options.keys);
        return true;
      case ImportForm::Syslog:
        m_format = std::make_unique<SyslogLines>(m_fields, m_clock);
        return true;
      case ImportForm::Journal:
        m_format = std::make_unique<JournalLines>(m_fields);
        return true;
      default:
        m_format = RegexLines::Make(m_options.expression, m_fields, why);
        return m_format != nullptr;
    }
  }

  int Read(LogImport& import, const Input& input) {
    m_clock.SetLatest(input.Latest());
    const LineReader* bytes = nullptr;
    LineReader reader(input.Descriptor(), [&] {
      m_progress.Show("Importing...", bytes ? bytes->BytesRead() : 0, input.Size());
      return !Interrupted();
    });
    bytes = &reader;
    std::string why;
    if (import.Read(reader, input.Name(), &why)) return kExitGood;
    m_progress.Clear();
    if (reader.Stopped()) {
      PrintError(m_options.out + ": interrupted after " + std::to_string(m_parts.Traces()) +
                 " traces, and not written");
      return kExitInterrupted;
    }
    return Refuse(reader.Error() != 0 ? why : m_options.out + ": " + why);
  }

  // What has been written to standard output, and what is not as in the input to standard error.
  int Tell(const ImportCounts& counts) {
    m_progress.Clear();
    const std::vector<std::string> texts = ImportTexts(counts, m_parts.Losses(), m_fields);
    for (const std::string& text : texts) PrintError(text);
    for (const std::string& note : m_format->Notes()) PrintError(note);
    Output output;
    std::string files;
    for (const std::string& path : m_parts.Paths()) files += (files.empty() ? "" : ", ") + path;
    output.Line(files + ": " + GroupDigits(m_parts.Traces()) +
                (m_parts.Traces() == 1 ? " trace" : " traces"));
    if (m_clock.YearsAdded() > 0)
      output.Line(GroupDigits(m_clock.YearsAdded()) +
                  (m_clock.YearsAdded() == 1 ? " time has" : " times have") +
                  " no year: it is the last one before the end of their input");
    const int status = output.Finish();
    const bool whole =
        counts.strange + counts.cutLines + m_parts.Losses().cutTexts + m_parts.Losses().cutNames ==
        0;
    return status != kExitGood || whole ? status : kExitDamaged;
  }

  const ImportOptions& m_options;
  ImportClock m_clock;
  ImportFields m_fields;
  std::unique_ptr<LineFormat> m_format;
  ImportParts m_parts{kTrcFileBytesMax};
  ProgressLine m_progress;
};

}  // namespace

int RunImport(const ImportOptions& options) {
  std::string why;
  const auto zone = UseZone(options.zone, &why);
  if (!zone) {
    PrintError("--zone: " + why);
    return kExitBad;
  }
  return Import(options, *zone).Run();
}
