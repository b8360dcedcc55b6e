#include "commands/import.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <initializer_list>
#include <memory>
#include <optional>

#include "base/fail_with.h"
#include "base/text.h"
#include "import/chrome/chrome_import.h"
#include "import/json/json_pull.h"
#include "import/lines/journal_lines.h"
#include "import/lines/json_lines.h"
#include "import/lines/regex_lines.h"
#include "import/lines/syslog_lines.h"
#include "import/otlp/otlp_frames.h"
#include "import/otlp/otlp_import.h"
#include "records/trc_walk.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

// The form of an input that has no lines, by its first bytes. ByContent: it cannot be told.
ImportForm FormOf(std::string_view head) {
  if (BeginsAsJson(head)) {
    if (head[head.find_first_not_of(" \t\r\n")] == '[') return ImportForm::Chrome;
    const auto firstOf = [head](std::initializer_list<std::string_view> keys) {
      std::size_t first = head.npos;
      for (const std::string_view key : keys) first = std::min(first, head.find(key));
      return first;
    };
    const std::size_t chrome = firstOf({"\"traceEvents\""});
    const std::size_t otlp = firstOf({"\"resourceLogs\"", "\"resource_logs\"", "\"resourceSpans\"",
                                      "\"resource_spans\"", "\"resourceMetrics\""});
    if (chrome == otlp) return ImportForm::ByContent;
    return chrome < otlp ? ImportForm::Chrome : ImportForm::Otlp;
  }
  // A line of text has no such bytes, but for a line end.
  constexpr unsigned char kResourceTag = '\n';
  const bool isProtobuf = !head.empty() &&
                          (static_cast<unsigned char>(head[0]) <= OtlpFrames::kLengthFirstMax ||
                           static_cast<unsigned char>(head[0]) == kResourceTag) &&
                          std::any_of(head.begin(), head.end(), [](char byte) {
                            const auto code = static_cast<unsigned char>(byte);
                            return code < ' ' && (code < '\t' || code > '\r');
                          });
  return isProtobuf ? ImportForm::Otlp : ImportForm::ByContent;
}

class Import {
 public:
  Import(const ImportOptions& options, ImportZone zone)
      : m_options(options),
        m_clock({.zone = zone, .format = options.timeFormat}),
        m_fields(options.rules, m_clock) {}

  int Run() {
    std::string why;
    if (HasLines(m_options.form) && !MakeFormat(&why)) return Refuse("--regex: " + why);
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
    if (m_format) m_lines.emplace(*m_format, m_fields, m_parts, m_options.join);
    for (const auto& input : inputs)
      if (const int status = Read(*input); status != kExitGood) return status;
    if (!m_parts.Finish(&why)) return Refuse(m_options.out + ": " + why);
    return Tell();
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

  int Read(const Input& input) {
    m_clock.SetLatest(input.Latest());
    const LineReader* bytes = nullptr;
    LineReader reader(input.Descriptor(), [&] {
      m_progress.Show("Importing...", bytes ? bytes->BytesRead() : 0, input.Size());
      return !Interrupted();
    });
    bytes = &reader;
    std::string why;
    const bool isTold = m_options.form != ImportForm::ByContent;
    const ImportForm form = isTold ? m_options.form : FormOf(HeadOf(reader));
    if (form == ImportForm::ByContent && !reader.Stopped() && reader.Error() == 0) {
      m_progress.Clear();
      return Refuse(input.Name() + ": its first bytes do not tell its form; name it: --journal, " +
                    "--syslog, --jsonl, --regex, --otlp or --chrome");
    }
    if (ReadAs(form, reader, input.Name(), &why)) return kExitGood;
    m_progress.Clear();
    if (reader.Stopped()) {
      PrintError(m_options.out + ": interrupted after " + std::to_string(m_parts.Traces()) +
                 " traces, and not written");
      return kExitInterrupted;
    }
    return Refuse(reader.Error() != 0 ? why : m_options.out + ": " + why);
  }

  static std::string_view HeadOf(LineReader& reader) {
    constexpr std::size_t kHeadBytes = std::size_t{64} << 10;
    const std::string_view head = reader.PeekBytes(kHeadBytes);
    return head.substr(head.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
  }

  bool ReadAs(ImportForm form, LineReader& reader, const std::string& name, std::string* why) {
    if (m_lines) return m_lines->Read(reader, name, why);
    if (reader.PeekBytes(kByteOrderMark.size()) == kByteOrderMark)
      reader.Drop(kByteOrderMark.size());
    return form == ImportForm::Chrome ? m_chrome.Read(reader, name, why)
                                      : m_otlp.Read(reader, name, why);
  }

  // What has been written to standard output, and what is not as in the input to standard error.
  int Tell() {
    m_progress.Clear();
    const ImportCounts counts = m_lines ? m_lines->Counts() : ImportCounts{};
    for (const std::string& text : m_chrome.Texts()) PrintError(text);
    for (const std::string& text : m_otlp.Texts()) PrintError(text);
    for (const std::string& text : ImportTexts(counts, m_parts.Losses(), m_fields))
      PrintError(text);
    if (m_format)
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
        m_chrome.IsWhole() && m_otlp.IsWhole() &&
        counts.strange + counts.cutLines + m_parts.Losses().cutTexts + m_parts.Losses().cutNames ==
            0;
    return status != kExitGood || whole ? status : kExitDamaged;
  }

  const ImportOptions& m_options;
  ImportClock m_clock;
  ImportFields m_fields;
  std::unique_ptr<LineFormat> m_format;
  ImportParts m_parts{kTrcFileBytesMax};
  std::optional<LogImport> m_lines;
  ChromeImport m_chrome{m_fields, m_parts};
  OtlpImport m_otlp{m_fields, m_parts};
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
