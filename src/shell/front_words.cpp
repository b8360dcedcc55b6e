#include "shell/front_words.h"

#include <filesystem>

#include "base/text.h"
#include "config/document/config_doc.h"
#include "documents/trace_file_doc.h"
#include "documents/trace_realtime_doc.h"
#include "docview/frame.h"
#include "listview/rows/trace_view.h"
#include "listview/source/source_doc.h"

namespace {

void Say(const std::string& words, std::string& message) {
  if (!message.empty()) message += ", ";
  message += words;
}

// A write to a file need not have changed the shown traces.
std::string ChangeWords(const FileChange& change) {
  const bool lost = change.Any() && change.kind != FileChange::Kind::Written;
  return (lost ? "damaged: " : "") + FileChangeText(change);
}

void DescribeFile(const CTraceFileDoc& file, FrontWords& words) {
  words.message = ChangeWords(file.Change());
  if (!file.Damage().Any()) return;
  words.details = words.message;
  Say("damaged: " + DamageText(file.Damage()), words.message);
  Say("damaged: " + DamageText(file.Damage(), true), words.details);
}

void DescribeMonitor(const CTraceRealtimeDoc& monitor, const CView* view, FrontWords& words) {
  if (!monitor.IsLive()) {
    Say("not connected", words.message);
  } else if (monitor.IsPaused()) {
    Say("paused", words.message);
  } else if (const auto* const list = dynamic_cast<const CTraceView*>(view)) {
    Say(list->AtBottom() ? "following" : "not following", words.message);
  }
  if (!monitor.IsCapturing()) return;
  Say("capturing to " + monitor.CaptureName(), words.message);
  words.details = words.message;
}

// The title names the machine: the file is told here.
void DescribeConfig(const CConfigDoc& config, FrontWords& words) {
  if (!config.IsLive()) Say("not connected", words.message);
  const std::string& path = config.GetPathName();
  if (std::filesystem::path(path).is_absolute()) Say(path, words.message);
}

}  // namespace

FrontWords WordsOfFront(const CMDIChildWnd* front, std::int64_t rows) {
  FrontWords words;
  const CDocument* const document = front ? front->GetActiveDocument() : nullptr;
  const auto* const traces = dynamic_cast<const CTraceDoc*>(document);
  if (dynamic_cast<const CSourceDoc*>(document)) words.message = document->GetPathName();
  if (const auto* const config = dynamic_cast<const CConfigDoc*>(document))
    DescribeConfig(*config, words);
  if (!traces) return words;
  if (const auto* const file = dynamic_cast<const CTraceFileDoc*>(document))
    DescribeFile(*file, words);
  if (const auto* const monitor = dynamic_cast<const CTraceRealtimeDoc*>(document))
    DescribeMonitor(*monitor, front->GetActiveView(), words);
  if (rows >= 0)
    words.rows = GroupDigits(static_cast<std::uint64_t>(rows)) + " of " +
                 GroupDigits(traces->m_traces.size()) + " traces";
  return words;
}
