#include "quor/otlp/send/judged_answer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "quor/otlp/otlp.pb.h"

namespace {

constexpr std::size_t kWordsBytes = 300;
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// "Sun, 06 Nov 1994 08:49:37 GMT". Nothing: another form, two of which are obsolete.
std::optional<std::time_t> ReadHttpDate(const std::string& text) {
  std::tm at{};
  char month[4] = "", zone[4] = "";
  if (std::sscanf(text.c_str(), "%*3c, %2d %3s %4d %2d:%2d:%2d %3s", &at.tm_mday, month,
                  &at.tm_year, &at.tm_hour, &at.tm_min, &at.tm_sec, zone) != 7)
    return std::nullopt;
  const auto found = std::find(kMonths.begin(), kMonths.end(), month);
  if (found == kMonths.end() || std::string_view(zone) != "GMT") return std::nullopt;
  at.tm_mon = static_cast<int>(found - kMonths.begin());
  at.tm_year -= 1900;
  return timegm(&at);
}

bool SpeaksProtobuf(const HttpResponse& response) {
  return response.contentType.empty() || response.contentType.starts_with("application/x-protobuf");
}

template <class Message>
std::optional<Message> Read(const HttpResponse& response) {
  Message message;
  const auto size = static_cast<int>(response.body.size());  // bounded by the reader
  if (!SpeaksProtobuf(response) || !message.ParseFromArray(response.body.data(), size))
    return std::nullopt;
  return message;
}

std::string Short(const std::string& words) {
  return words.substr(0, kWordsBytes);
}

JudgedAnswer JudgeTaken(const HttpResponse& response) {
  JudgedAnswer judged;
  judged.kind = JudgedAnswer::Kind::Taken;
  const auto answer = Read<quor::otlp::ExportAnswer>(response);
  if (!answer || answer->partial_success().rejected() <= 0) return judged;
  judged.rejected = static_cast<std::uint64_t>(answer->partial_success().rejected());
  judged.reason = "the collector rejected them";
  judged.words = Short(answer->partial_success().error_message());
  return judged;
}

bool IsForNow(int status) {
  return status == 429 || (status >= 502 && status <= 504);
}

}  // namespace

std::optional<std::chrono::seconds> ReadRetryAfter(std::string_view text, std::time_t date) {
  std::uint32_t seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, seconds);
  if (error == std::errc() && rest == end) return std::chrono::seconds(seconds);
  const auto at = ReadHttpDate(std::string(text));
  if (!at) return std::nullopt;
  return std::chrono::seconds(std::max<std::time_t>(*at - date, 0));
}

JudgedAnswer JudgeAnswer(const HttpResult& result, std::time_t date) {
  if (result.status >= 200 && result.status < 300) return JudgeTaken(result.response);
  JudgedAnswer judged;
  if (result.status == 0) {
    judged.reason = "the collector is not reached: " + result.why;
    return judged;
  }
  const std::string status = std::to_string(result.status);
  if (const auto told = Read<quor::otlp::RpcStatus>(result.response))
    judged.words = Short(told->message());
  if (IsForNow(result.status)) {
    judged.reason = "the collector takes nothing now (" + status + ")";
    judged.after = ReadRetryAfter(result.response.retryAfter, date);
    return judged;
  }
  judged.kind = JudgedAnswer::Kind::Lost;
  judged.reason = "the collector refused them (" + status + ")";
  return judged;
}
