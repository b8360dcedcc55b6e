#include "config/tcf/tcf_write.h"

#include "config/tcf/config_texts.h"
#include "config/tcf/tcf_lines.h"
#include "config/tcf/tcf_words.h"
#include "quor/settings/settings_words.h"

namespace {

constexpr std::string_view kAppKeyword = "APP: ", kSinkKeyword = "SINK: ",
                           kTraceKeyword = "TRACE: ", kNode = "node=";

bool WriteLine(std::ostream& to, std::string_view text) {
  to << text << std::endl;
  return to.good();
}

TcfWritten WriteSink(std::ostream& to, const trace_App_i& app) {
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
  app.GetSink(type, name, options);
  if (!(to << kSinkKeyword)) return TcfWritten::Unwritable;
  if (type != trc_SinkFile && type != trc_SinkSocket) return TcfWritten::UnsupportedSink;
  options = TcfSinkOptions(type, name, std::move(options));
  const std::string line = TcfSinkLine(type, name, options);
  return WriteLine(to, std::string_view(line).substr(kSinkKeyword.size())) ? TcfWritten::Whole
                                                                           : TcfWritten::Unwritable;
}

bool WriteTraces(std::ostream& to, const trace_App_i& app) {
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      if (const unsigned settings = app.GetSettings(category.traceId);
          settings != 0 && !WriteLine(to, TcfTraceLine(component.name, category.name, settings)))
        return false;
  return true;
}

}  // namespace

std::string QuoteTcfField(std::string_view value) {
  std::string field = "\"";
  for (const char byte : value) field.append(byte == '\\' ? 2 : 1, byte);
  return field + '"';
}

std::string TcfAppLine(std::string_view app) {
  return std::string(kAppKeyword) + QuoteTcfField(app);
}

std::string TcfSinkLine(trc_SinkTypes_e type, std::string_view name, std::string_view options) {
  std::string line(kSinkKeyword);
  line.append(type == trc_SinkFile ? kTcfFileWord : kTcfSocketWord);
  return line + " " + QuoteTcfField(name) + " " + QuoteTcfField(options);
}

std::string TcfTraceLine(std::string_view component, std::string_view category, unsigned settings) {
  std::string line =
      std::string(kTraceKeyword) + QuoteTcfField(component) + " " + QuoteTcfField(category);
  // Kept: bits without a word are lost, a trace that has no other bit keeps its line. Safe: these
  // bits switch nothing on.
  for (const SettingsWord& known : kSettingsWords)
    if (settings & known.bit) line.append(" ").append(known.word);
  return line;
}

std::string TcfSinkOptions(trc_SinkTypes_e type, const std::string& name, std::string options) {
  if (type != trc_SinkSocket || name != "localhost") return options;
  const std::size_t node = options.find(kNode);
  if (node == options.npos) return options;
  const std::size_t end = options.find(';', node + kNode.size());
  // Kept: the count is the semicolon's index and not its distance, so that more than the entry goes
  // when something stands ahead of it. Safe: erase stops at the end of the string.
  if (end != options.npos) options.erase(node, end + 1);
  return options;
}

const char* WordsOf(TcfWritten written) {
  switch (written) {
    case TcfWritten::NoHeader:
      return ConfigTexts::kNotOpened;
    case TcfWritten::Unwritable:
      return "Error writing to file.";
    case TcfWritten::UnsupportedSink:
      return "Unsupported Sink Type.";
    default:
      return "";
  }
}

TcfWritten WriteTcf(std::ostream& to, const std::list<QuorPtr<trace_App_i>>& apps) {
  if (!WriteLine(to, kTcfHeader)) return TcfWritten::NoHeader;
  for (const QuorPtr<trace_App_i>& app : apps) {
    if (!WriteLine(to, TcfAppLine(app->GetAppName()))) return TcfWritten::Unwritable;
    if (const TcfWritten sink = WriteSink(to, *app); sink != TcfWritten::Whole) return sink;
    if (!WriteTraces(to, *app)) return TcfWritten::Unwritable;
  }
  return to.flush().good() ? TcfWritten::Whole : TcfWritten::Unwritable;
}
