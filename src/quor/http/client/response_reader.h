// Reads one HTTP/1.1 answer out of the bytes of a connection.
//
// Shape    Feed takes bytes in pieces of any size until the answer is whole. Interim answers (1xx)
//          are skipped. The answer is that to a POST: it may have a body with a length, in chunks,
//          or up to the end of the connection.
// Owner    The answer is its own. Next begins with another one.
// Errors   Failed and Why: nothing can be believed, close the connection. Head, lines, interim
//          answers and body are bounded. Of a body beyond its bound the beginning is kept, the
//          answer counts, and the connection cannot be used again.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "quor/http/chunked_body.h"
#include "quor/http/headers.h"

struct HttpResponse {
  int status = 0;
  std::string retryAfter, contentType;  // as they came; "": none
  std::vector<std::uint8_t> body;
  bool keepsAlive = false;  // the connection may be used again
};

class HttpResponseReader {
 public:
  static constexpr std::size_t kHeadBytesMax = 16u << 10, kHeaderLinesMax = 100;
  static constexpr std::size_t kBodyBytesMax = 64u << 10;
  static constexpr int kInterimMax = 8;
  enum class State { Head, Body, Complete, Failed };

  // How many bytes it has used. In the state Complete or Failed: none.
  std::size_t Feed(Bytes bytes);
  // The connection has ended.
  void End();
  State Now() const { return m_state; }
  // Nothing of an answer has come.
  bool IsIdle() const { return m_state == State::Head && m_head.empty() && m_interim == 0; }
  HttpResponse& Response() { return m_response; }  // REQUIRES: Complete
  const std::string& Why() const { return m_why; }
  void Next();

 private:
  std::size_t FeedHead(Bytes bytes);
  std::size_t FeedBody(Bytes bytes);
  bool TakeHead();
  bool TakeFirstLine(std::string_view line);
  bool TakeLength(const HttpHeaders& headers);
  bool Fail(std::string why);
  void Cut();

  State m_state = State::Head;
  std::string m_head, m_why;
  HttpResponse m_response;
  ChunkedBody m_chunks;
  enum class Length { None, Known, Chunked, ToTheEnd } m_length = Length::None;
  std::size_t m_left = 0;
  int m_interim = 0;
  bool m_isOld = false;  // HTTP/1.0
};
