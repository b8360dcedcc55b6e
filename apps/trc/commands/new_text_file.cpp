#include "commands/new_text_file.h"

#include <system_error>

#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

bool NewTextFile::Open(const std::string& path) {
  m_path = path;
  std::string why;
  CatchEndSignals();
  if (m_file.Begin(path, &why) && m_lines.Open(m_file.WriteTo(), &why)) return true;
  ReportError("Error opening output file.", why);
  return false;
}

int NewTextFile::Finish() {
  std::string why;
  if (!m_lines.Close()) {
    const int error = m_lines.Error();
    ReportError("Error writing to file.", error == 0 ? "" : std::generic_category().message(error));
    return kExitBad;
  }
  if (Interrupted()) {
    ReportError("interrupted, and not written", "");
    return kExitInterrupted;
  }
  if (m_file.Finish(&why)) return kExitGood;
  ReportError("Error opening output file.", why);
  return kExitBad;
}

void NewTextFile::ReportError(const char* text, const std::string& why) const {
  PrintError(m_path + ": " + text + (why.empty() ? "" : " " + why));
}
