// Any bytes as lines of a log, or as entries of a journal's export. The first byte chooses the
// form. Whatever a line gives must fit into a record: packed fields within their bits, and texts
// that lie in readable memory.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "import/journal_export.h"
#include "import/lines/journal_lines.h"
#include "import/lines/json_lines.h"
#include "import/lines/regex_lines.h"
#include "import/lines/syslog_lines.h"
#include "records/record_fields.h"

namespace {

// Reads every byte, so that the sanitizer sees one that is not there.
unsigned SumOf(std::string_view text) {
  unsigned sum = 0;
  for (const char byte : text) sum += static_cast<unsigned char>(byte);
  return sum;
}

void Check(const ImportedTrace& trace) {
  const auto [hour, minute, second, ms] = UnpackTime(trace.time);
  if (PackTime(hour, minute, second, ms) != trace.time || hour > 127) std::abort();
  volatile unsigned sum = SumOf(trace.text) + SumOf(trace.stack);
  for (const std::string_view name : trace.names) sum = sum + SumOf(name);
}

std::unique_ptr<LineFormat> FormatOf(unsigned form, ImportFields& fields, ImportClock& clock) {
  switch (form % 5) {
    case 0:
      return std::make_unique<JsonLines>(fields);
    case 1:
      return std::make_unique<SyslogLines>(fields, clock);
    case 2:
      return std::make_unique<JournalLines>(fields);
    case 3:
      return RegexLines::Make("(?<time>[^ ]* [^ ]*) (?<level>\\w*)(?: (?<location>\\S+))?", fields,
                              nullptr);
    default:
      return RegexLines::Make("(?<time>.*)", fields, nullptr);
  }
}

void ReadLine(std::string_view text, LineFormat& format, ImportFields& fields) {
  const std::string line(text);  // of its own, so that its end is guarded
  ImportedTrace trace = fields.Begin();
  if (format.Read(line, trace)) Check(trace);
}

void ReadExport(std::string_view bytes, LineFormat& format, ImportFields& fields) {
  const int file = memfd_create("export", MFD_CLOEXEC);
  if (file < 0 || write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    std::abort();
  lseek(file, 0, SEEK_SET);
  LineReader reader(file, [] { return true; });
  JournalExport entries(reader);
  for (InputLine line; entries.Next(line);) ReadLine(line.text, format, fields);
  close(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  ImportClock clock({.zone = ImportZone(3600), .format = data[0] > 127 ? "%d.%m.%Y %T.%f%z" : ""});
  clock.SetLatest(1'795'305'600);
  ImportFields fields({}, clock);
  const auto format = FormatOf(data[0], fields, clock);
  if (data[0] == 'x') {
    JournalLines journal(fields);
    ReadExport({reinterpret_cast<const char*>(data) + 1, size - 1}, journal, fields);
    return 0;
  }
  std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    ReadLine(rest.substr(0, end), *format, fields);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return 0;
}
