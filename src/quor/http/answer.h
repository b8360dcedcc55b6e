// The bytes of an HTTP/1.1 answer.
//
// Threads  Any.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

struct HttpAnswer {
  int status = 200;
  std::string contentType = {};  // empty: there is no body
  std::string body = {};
  // Further lines, each ended by CR LF.
  std::string headers = {};
  bool closes = false;     // the connection ends behind it
  bool hidesBody = false;  // to HEAD: the length is told, the body is not sent
};
std::string WriteAnswer(const HttpAnswer& answer, std::time_t now);
// "Not Found" for 404.
std::string_view HttpWordsOf(int status);
// Before the body, to a peer that waits for it.
constexpr std::string_view kHttpContinue = "HTTP/1.1 100 Continue\r\n\r\n";
// "Sun, 06 Nov 1994 08:49:37 GMT".
std::string HttpDate(std::time_t time);
