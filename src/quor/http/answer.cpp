#include "quor/http/answer.h"

#include <array>
#include <cstdio>
#include <utility>

namespace {

constexpr std::array<std::pair<int, std::string_view>, 16> kHttpWords{{
    {200, "OK"},
    {400, "Bad Request"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {411, "Length Required"},
    {413, "Content Too Large"},
    {415, "Unsupported Media Type"},
    {417, "Expectation Failed"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {503, "Service Unavailable"},
    {505, "HTTP Version Not Supported"},
}};
constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

std::string_view HttpWordsOf(int status) {
  for (const auto& [number, words] : kHttpWords)
    if (number == status) return words;
  return "Unknown";
}

// Not by strftime, which writes the words of the locale.
std::string HttpDate(std::time_t time) {
  std::tm utc{};
  gmtime_r(&time, &utc);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %02d %s %d %02d:%02d:%02d GMT",
                kDays.at(static_cast<std::size_t>(utc.tm_wday)), utc.tm_mday,
                kMonths.at(static_cast<std::size_t>(utc.tm_mon)), utc.tm_year + 1900, utc.tm_hour,
                utc.tm_min, utc.tm_sec);
  return text;
}

std::string WriteAnswer(const HttpAnswer& answer, std::time_t now) {
  std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " ";
  text += HttpWordsOf(answer.status);
  text += "\r\nDate: " + HttpDate(now) + "\r\n" + answer.headers;
  if (!answer.contentType.empty()) text += "Content-Type: " + answer.contentType + "\r\n";
  text += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
  text += answer.closes ? "Connection: close\r\n\r\n" : "\r\n";
  return answer.hidesBody ? text : text + answer.body;
}
