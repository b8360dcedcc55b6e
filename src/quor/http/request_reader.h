// Reads HTTP/1.1 requests out of the bytes of a connection.
//
// Shape    Feed takes bytes in pieces of any size. It stops behind the head of a request, so that
//          its reader may refuse what it asks before its body comes, and behind its end, because
//          the next request may follow in the same bytes. Next begins with that one.
// Owner    The request is valid until Next; it borrows from the reader. The body may be moved out.
// Errors   Failed: Status and Why are for the answer, after which the connection must be closed.
//          What two programs could take for two different requests is refused: a length and chunks,
//          several lengths, any coding but "chunked", a line that does not end with CR LF.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "quor/http/chunked_body.h"
#include "quor/http/headers.h"

struct HttpLimits {
  std::size_t headBytes = 16u << 10;
  std::size_t headerLines = 100;
  std::size_t bodyBytes = 4u << 20;
};

struct HttpRequest {
  std::string_view method, target;
  HttpHeaders headers;
  std::vector<std::uint8_t> body;
  bool keepsAlive = false;      // the peer may send another one
  bool awaitsContinue = false;  // it sends the body after "100 Continue"
};

class HttpRequestReader {
 public:
  enum class State { Head, Body, Complete, Failed };
  explicit HttpRequestReader(const HttpLimits& limits = {}) : m_limits(limits) {}

  // How many bytes it has used. In the state Complete or Failed: none.
  std::size_t Feed(Bytes bytes);
  State Now() const { return m_state; }
  // Nothing of a request has come.
  bool IsIdle() const { return m_state == State::Head && m_head.empty(); }
  HttpRequest& Request() { return m_request; }  // Body: without its body
  int Status() const { return m_status; }
  const std::string& Why() const { return m_why; }
  // REQUIRES: Complete.
  void Next();

 private:
  std::size_t FeedHead(Bytes bytes);
  std::size_t FeedBody(Bytes bytes);
  void TakeHead();
  bool TakeFirstLine(std::string_view line);
  bool TakeLength();
  bool TakeRules();
  bool Fail(int status, std::string why);

  const HttpLimits m_limits;
  State m_state = State::Head;
  std::string m_head;  // until it is whole; then what the request borrows
  HttpRequest m_request;
  ChunkedBody m_chunks;
  bool m_isChunked = false, m_isOld = false;  // HTTP/1.0
  bool m_skippedLine = false;
  std::size_t m_left = 0;  // of a body with a length
  int m_status = 0;
  std::string m_why;
};
