#include "shell/front_texts.h"

#include <filesystem>
#include <utility>

#include "base/text.h"
#include "config/document/config_doc.h"
#include "documents/trace_file_doc.h"
#include "documents/trace_realtime_doc.h"
#include "docview/frame.h"
#include "listview/rows/trace_view.h"
#include "listview/source/source_doc.h"
#include "listview/time/zone_text.h"
#include "panes/trace_pane.h"
#include "settings/globals.h"

namespace {

void Append(const std::string& texts, std::string& message) {
  if (!message.empty() && !texts.empty()) message += ", ";
  message += texts;
}

// A write to a file need not have changed the shown traces.
std::string ChangeText(const FileChange& change) {
  const bool lost = change.Any() && change.kind != FileChange::Kind::Written;
  return (lost ? "damaged: " : "") + FileChangeText(change);
}

void DescribeFile(const CTraceFileDoc& file, FrontTexts& texts) {
  texts.message = texts.details = ChangeText(file.Change());
  if (file.Damage().Any()) {
    Append("damaged: " + DamageText(file.Damage()), texts.message);
    Append("damaged: " + DamageText(file.Damage(), true), texts.details);
  }
  for (const std::string& text : LossTexts(file.Conversion()))
    Append("before the conversion " + text, texts.message);
  for (const std::string& text : LossTexts(file.Conversion(), true))
    Append("before the conversion " + text, texts.details);
  if (texts.details == texts.message) texts.details.clear();
}

void DescribeMonitor(const CTraceRealtimeDoc& monitor, const CView* view, FrontTexts& texts) {
  if (!monitor.IsLive()) {
    Append("not connected", texts.message);
  } else if (monitor.IsPaused()) {
    Append("paused", texts.message);
  } else if (const auto* const list = dynamic_cast<const CTraceView*>(view)) {
    Append(list->AtBottom() ? "following" : "not following", texts.message);
  }
  if (!monitor.IsCapturing()) return;
  Append("capturing to " + monitor.CaptureName(), texts.message);
  texts.details = texts.message;
}

// The title names the machine: the file is told here.
void DescribeConfig(const CConfigDoc& config, FrontTexts& texts) {
  if (!config.IsLive()) Append("not connected", texts.message);
  const std::string& path = config.GetPathName();
  if (std::filesystem::path(path).is_absolute()) Append(path, texts.message);
}

}  // namespace

FrontTexts TextsOfFront(const CMDIChildWnd* front, std::int64_t rows) {
  FrontTexts texts;
  const CDocument* const document = front ? front->GetActiveDocument() : nullptr;
  const auto* const traces = dynamic_cast<const CTraceDoc*>(document);
  if (dynamic_cast<const CSourceDoc*>(document)) texts.message = document->GetPathName();
  if (const auto* const config = dynamic_cast<const CConfigDoc*>(document))
    DescribeConfig(*config, texts);
  if (!traces) return texts;
  if (const auto* const file = dynamic_cast<const CTraceFileDoc*>(document))
    DescribeFile(*file, texts);
  if (const auto* const monitor = dynamic_cast<const CTraceRealtimeDoc*>(document))
    DescribeMonitor(*monitor, front->GetActiveView(), texts);
  const auto* const pane = dynamic_cast<const TracePane*>(front->GetActiveView());
  if (pane && pane->Hits()) {
    std::string hits = pane->Hits()->Text();
    Append(texts.message, hits);
    texts.message = std::move(hits);
  }
  texts.zone = ZoneText(traces->m_traces, g_useUtc);
  if (rows >= 0)
    texts.rows = GroupDigits(static_cast<std::uint64_t>(rows)) + " of " +
                 GroupDigits(traces->m_traces.size()) + " traces";
  return texts;
}
