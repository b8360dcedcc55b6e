#include "config/tcf/tcf_lines.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/fail_with.h"
#include "config/tcf/tcf_words.h"
#include "quor/client/trace_config.h"
#include "quor/settings/settings_words.h"

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr struct {
  std::string_view keyword;
  TcfLineType type;
} kKeywords[] = {{"APP:", CfgLineApp}, {"SINK:", CfgLineSink}, {"TRACE:", CfgLineTrace}};
constexpr std::size_t kLongestKeyword = 6;

constexpr char kUnreadable[] = "the file cannot be read";
constexpr char kBadApp[] = "APP: takes one name in quotes";
constexpr char kBadSink[] = "SINK: takes File or Socket, then a name and options in quotes";
constexpr char kBadTrace[] = "TRACE: takes a component and a category in quotes";

// A bad line. At the end of the file it is one too: without this it would read as a good end.
bool Bad(std::istream& in, std::string* why, std::string reason) {
  if (in.eof()) in.clear(in.rdstate() & ~std::ios::eofbit);
  return FailWith(why, std::move(reason));
}

// The rest of the line without its line end and the blanks in front of that.
bool ReadRest(std::istream& in, std::string* rest, std::string* why) {
  rest->clear();
  char piece[1024];
  for (bool more = true; more;) {
    in.getline(piece, sizeof piece);
    const auto got = static_cast<std::size_t>(in.gcount());
    // Failed without the end of the file: the piece is full and the line goes on.
    more = in.fail() && !in.bad() && !in.eof() && got == sizeof piece - 1;
    if (more) in.clear(in.rdstate() & ~std::ios::failbit);
    // A line end is counted, but it is not in the piece.
    const bool ended = !more && !in.eof() && !in.fail();
    rest->append(piece, ended ? got - 1 : got);
    if (rest->size() > kLongestTcfLineBytes) return Bad(in, why, "the line is too long");
  }
  if (in.bad()) return Bad(in, why, kUnreadable);
  if (!rest->empty() && rest->back() == '\r') rest->pop_back();
  rest->resize(rest->find_last_not_of(kBlanks) + 1);  // npos + 1 is 0
  return true;
}

void SkipBlanks(std::string_view* text) {
  text->remove_prefix(std::min(text->find_first_not_of(kBlanks), text->size()));
}

// What stands between the quotes. A backslash that is alone stays.
std::string Unquoted(std::string_view written) {
  std::string value;
  value.reserve(written.size());
  for (std::size_t at = 0; at < written.size(); ++at) {
    value.push_back(written[at]);
    if (written.substr(at, 2) == "\\\\") ++at;
  }
  return value;
}

// A field that another field follows; the text then begins with that one.
bool TakeField(std::string_view* text, std::string* value) {
  if (text->empty() || text->front() != '"') return false;
  for (std::size_t at = text->find('"', 1); at != text->npos; at = text->find('"', at + 1)) {
    const std::size_t next = text->find_first_not_of(kBlanks, at + 1);
    if (next == text->npos || next == at + 1 || (*text)[next] != '"') continue;
    *value = Unquoted(text->substr(1, at - 1));
    text->remove_prefix(next);
    return true;
  }
  return false;
}

// The last field of a line; what follows its quote is left.
bool TakeLastField(std::string_view* text, std::string* value) {
  if (text->empty() || text->front() != '"') return false;
  const std::size_t last = text->rfind('"');
  if (last == 0) return false;
  *value = Unquoted(text->substr(1, last - 1));
  text->remove_prefix(last + 1);
  return true;
}

std::string_view TakeWord(std::string_view* text) {
  const std::string_view word = text->substr(0, text->find_first_of(kBlanks));
  text->remove_prefix(word.size());
  return word;
}

// Each word with blanks in front of it.
bool TakeSettings(std::string_view text, unsigned short* settings, std::string* why) {
  unsigned bits = 0;
  while (!text.empty()) {
    const std::size_t before = text.size();
    SkipBlanks(&text);
    if (text.size() == before) return FailWith(why, "no blank after the category");
    const std::string_view word = TakeWord(&text);
    unsigned bit = 0;
    for (const SettingsWord& known : kSettingsWords)
      if (word == known.word) bit = known.bit;
    if (bit == 0) return FailWith(why, "\"" + std::string(word) + "\" is no setting");
    bits |= bit;
  }
  *settings = static_cast<unsigned short>(bits);
  return true;
}

}  // namespace

bool _trc_GetCfgLineVersion(std::istream& in, std::string* version, std::string* why) {
  if (in.peek() == std::istream::traits_type::eof())
    return FailWith(why, in.bad() ? kUnreadable : "the file is empty");
  if (!ReadRest(in, version, why)) return false;
  if (version->starts_with(kByteOrderMark)) version->erase(0, kByteOrderMark.size());
  return true;
}

bool _trc_GetCfgLineType(std::istream& in, int* type, std::string* why) {
  constexpr int kEnd = std::istream::traits_type::eof();
  std::string word;
  int next = in.peek();
  for (; next == ' ' || next == '\t' || next == '\r' || next == '\n'; next = in.peek()) {
    if (!ReadRest(in, &word, why)) return false;
    if (!word.empty()) return Bad(in, why, "a blank stands in front of the keyword");
  }
  if (next == kEnd) return FailWith(why, in.bad() ? kUnreadable : "");
  for (; next != kEnd && next != '\n' && word.size() < kLongestKeyword; next = in.peek()) {
    word.push_back(static_cast<char>(in.get()));
    if (word.back() == ':') break;
  }
  next = in.peek();
  for (const auto& known : kKeywords) {
    if (word != known.keyword || (next != ' ' && next != '\t')) continue;
    *type = known.type;
    return true;
  }
  return Bad(in, why, "the line begins with none of APP:, SINK: and TRACE:");
}

bool _trc_GetCfgLineAppName(std::istream& in, std::string* name, std::string* why) {
  std::string line;
  if (!ReadRest(in, &line, why)) return false;
  std::string_view text = line;
  SkipBlanks(&text);
  return (TakeLastField(&text, name) && text.empty()) || Bad(in, why, kBadApp);
}

bool _trc_GetCfgLineSink(std::istream& in, unsigned char* type, std::string* name,
                         std::string* options, std::string* why) {
  std::string line;
  if (!ReadRest(in, &line, why)) return false;
  std::string_view text = line;
  SkipBlanks(&text);
  const std::string_view word = TakeWord(&text);
  if (word != kTcfFileWord && word != kTcfSocketWord) return Bad(in, why, kBadSink);
  *type = word == kTcfFileWord ? trc_SinkFile : trc_SinkSocket;
  SkipBlanks(&text);
  const bool good = TakeField(&text, name) && TakeLastField(&text, options) && text.empty();
  return good || Bad(in, why, kBadSink);
}

bool _trc_GetCfgLineTrace(std::istream& in, std::string* component, std::string* category,
                          unsigned short* settings, std::string* why) {
  std::string line, reason = kBadTrace;
  if (!ReadRest(in, &line, why)) return false;
  std::string_view text = line;
  SkipBlanks(&text);
  const bool good = TakeField(&text, component) && TakeLastField(&text, category) &&
                    TakeSettings(text, settings, &reason);
  return good || Bad(in, why, reason);
}
