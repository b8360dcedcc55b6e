#include "listview/details/detail_texts.h"

#include "base/quor_ptr.h"
#include "records/process_name.h"
#include "records/timer.h"
#include "settings/globals.h"

namespace {

constexpr char kNotAvailable[] = "n/a";

// Kept: a list's export writes "Warn" for the second.
std::string SeverityWord(int attributes) {
  const int severity = attributes & kSeverityMask;
  switch (severity) {
    case kAttributeInfo:
      return "Info";
    case kAttributeWarn:
      return "Warning";
    case kAttributeError:
      return "Error";
    default:
      return QuorStr::NumToStr(severity);
  }
}

std::string SourceOf(const TraceEvent_i& event, const NameMap& names) {
  const std::string file = event.GetSourceFileName(names);
  return file.empty() ? file : file + ":" + QuorStr::NumToStr(event.GetSourceLine());
}

}  // namespace

DetailTexts DetailTextsOf(const TraceEvent_i& event, const NameMap& names) {
  const std::uint32_t count = event.GetSequenceNumber();
  DetailTexts texts;
  texts.severity = SeverityWord(event.GetAttributes());
  texts.count = count == kNoSequenceNumber ? std::string() : QuorStr::NumToStr(count);
  texts.attributes = AttributesToLabel(event.GetAttributes());
  texts.component = event.GetComponentName(names);
  texts.category = event.GetCategoryName(names);
  texts.machine = event.GetMachineName(names);
  texts.application = event.GetAppName(names);
  texts.pid = event.GetPidName(names);
  texts.tid = event.GetTidName(names);
  texts.account = ProcessName::Of(texts.pid).account;
  texts.time = event.GetTimeString(!g_useUtc);
  texts.source = SourceOf(event, names);
  texts.ticCount = QuorStr::NumToStr(event.GetTicCount());  // kept: 0 reads "0" here
  return texts;
}

std::string TicDifferenceText(std::uint64_t ticCount, const TraceEvent_i* earlier) {
  if (ticCount == 0 || !earlier) return kNotAvailable;
  const std::uint64_t difference = ticCount - earlier->GetTicCount();
  const QuorPtr<trc_Timer_i> timer(CreateTimer());
  timer->SetPicoseconds(static_cast<double>(static_cast<std::int64_t>(difference)));
  return QuorStr::NumToStr(difference) + " (" + timer->Format() + ")";
}

std::vector<std::string> StackLines(const std::string& stack) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end; (end = stack.find('\n', begin)) != std::string::npos; begin = end + 1)
    lines.push_back(stack.substr(begin, end - begin));
  if (begin < stack.size()) lines.push_back(stack.substr(begin));
  return lines;
}
