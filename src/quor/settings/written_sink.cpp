#include "quor/settings/written_sink.h"

#include <charconv>
#include <cstdint>
#include <iterator>

#include "base/fail_with.h"
#include "base/near/near_word.h"
#include "quor/settings/plain_words.h"

namespace {

constexpr const char* kFile = "file:";
constexpr const char* kSocket = "socket:";
constexpr const char* kOptions[] = {"flush", "maxfiles", "maxsize"};

std::optional<std::uint32_t> NumberIn(std::string_view text) {
  std::uint32_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string SmallLetters(std::string_view text) {
  std::string small(text);
  for (char& c : small) c = SmallLetter(c);
  return small;
}

bool ReadFileOption(std::string_view text, std::string& options, std::string* why) {
  const std::size_t equals = text.find('=');
  const std::string key = SmallLetters(text.substr(0, equals));
  bool known = false;
  for (const char* const option : kOptions) known = known || key == option;
  if (!known)
    return FailWith(why, InQuotes(key) + " is no option of a file" +
                             DidYouMean(key, {std::begin(kOptions), std::end(kOptions)}));
  const auto number =
      equals == std::string_view::npos ? std::nullopt : NumberIn(text.substr(equals + 1));
  if (!number || (key == "flush" && *number > 1))
    return FailWith(why, InQuotes(text) + (key == "flush" ? " takes 0 or 1" : " takes a number"));
  if ((";" + options).find(";" + key + "=") != std::string::npos)
    return FailWith(why, InQuotes(key) + " stands there twice");
  options += key + "=" + std::to_string(*number) + ";";
  return true;
}

bool ReadOptions(std::string_view text, WrittenSink& sink, std::string* why) {
  for (bool more = true; more;) {
    const std::size_t end = text.find('&');
    more = end != std::string_view::npos;
    const std::string_view option = text.substr(0, end);
    if (more) text.remove_prefix(end + 1);
    if (!sink.file)
      sink.options.append(option).append(";");
    else if (!ReadFileOption(option, sink.options, why))
      return false;
  }
  return true;
}

}  // namespace

std::optional<WrittenSink> WrittenSink::Read(std::string_view text, std::string* why) {
  text = WithoutBlanks(text);
  const std::size_t colon = text.find(':');
  const std::string kind =
      SmallLetters(text.substr(0, colon == std::string_view::npos ? colon : colon + 1));
  if (kind != kFile && kind != kSocket)
    return FailWith(why,
                    InQuotes(text) + " begins neither with \"file:\" nor with \"socket:\"" +
                        DidYouMean(kind, {kFile, kSocket}),
                    std::nullopt);
  WrittenSink sink;
  sink.file = kind == kFile;
  text.remove_prefix(kind.size());
  const std::size_t query = text.rfind('?');
  sink.name = text.substr(0, query);
  if (sink.name.empty())
    return FailWith(why, std::string("it names no ") + (sink.file ? "file" : "machine"),
                    std::nullopt);
  if (query != std::string_view::npos && !ReadOptions(text.substr(query + 1), sink, why))
    return std::nullopt;
  return sink;
}
