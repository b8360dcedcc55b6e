#include "quor/http/request_reader.h"

#include <algorithm>

namespace {

constexpr std::string_view kLineEnd = "\r\n", kHeadEnd = "\r\n\r\n";

}  // namespace

void HttpRequestReader::Next() {
  m_state = State::Head;
  m_head.clear();
  m_request = {};
  m_isChunked = m_isOld = m_skippedLine = false;
  m_left = 0;
}

bool HttpRequestReader::Fail(int status, std::string why) {
  m_state = State::Failed;
  m_status = status;
  m_why = std::move(why);
  return false;
}

std::size_t HttpRequestReader::Feed(Bytes bytes) {
  if (m_state == State::Head) return FeedHead(bytes);
  if (m_state == State::Body) return FeedBody(bytes);
  return 0;
}

// One empty line may stand before a request: some clients send one after a body.
std::size_t HttpRequestReader::FeedHead(Bytes bytes) {
  const std::size_t had = m_head.size();
  const std::size_t taken = std::min(bytes.size(), m_limits.headBytes + 1 - had);
  m_head.append(reinterpret_cast<const char*>(bytes.data()), taken);
  std::size_t skipped = 0;
  if (!m_skippedLine && m_head.starts_with(kLineEnd)) {
    m_skippedLine = true;
    skipped = kLineEnd.size();
    m_head.erase(0, skipped);
  }
  const std::size_t from = had < kHeadEnd.size() + skipped ? 0 : had - kHeadEnd.size() - skipped;
  const std::size_t end = m_head.find(kHeadEnd, from);
  if (end == m_head.npos) {
    if (m_head.size() > m_limits.headBytes) Fail(431, "the head of the request is too long");
    return taken;
  }
  m_head.resize(end + kHeadEnd.size());
  TakeHead();
  return m_head.size() + skipped - had;
}

void HttpRequestReader::TakeHead() {
  const std::size_t lineEnd = m_head.find(kLineEnd);
  const std::string_view head = m_head;
  std::string why;
  if (!TakeFirstLine(head.substr(0, lineEnd))) return;
  const std::string_view lines = head.substr(lineEnd + 2, head.size() - lineEnd - 4);
  if (!m_request.headers.Parse(lines, m_limits.headerLines, &why)) {
    Fail(why == "too many header lines" ? 431 : 400, why);
    return;
  }
  if (!TakeRules() || !TakeLength()) return;
  m_state = m_isChunked || m_left > 0 ? State::Body : State::Complete;
}

bool HttpRequestReader::TakeFirstLine(std::string_view line) {
  const std::size_t first = line.find(' '), last = line.rfind(' ');
  if (first == line.npos || first == last) return Fail(400, "no request line");
  m_request.method = line.substr(0, first);
  m_request.target = line.substr(first + 1, last - first - 1);
  const std::string_view version = line.substr(last + 1);
  if (!IsHttpToken(m_request.method)) return Fail(400, "a malformed method");
  m_isOld = version == "HTTP/1.0";
  if (!m_isOld && version != "HTTP/1.1")
    return version.starts_with("HTTP/") ? Fail(505, "only HTTP/1.1 is spoken here")
                                        : Fail(400, "no request line");
  const auto isPlain = [](char c) { return c > ' ' && c < 0x7F; };
  if (m_request.target.empty() || m_request.target.front() != '/' ||
      !std::all_of(m_request.target.begin(), m_request.target.end(), isPlain))
    return Fail(400, "the target is not a path");
  return true;
}

bool HttpRequestReader::TakeRules() {
  const HttpHeaders& headers = m_request.headers;
  if (headers.Count("host") > 1 || (!m_isOld && !headers.Has("host")))
    return Fail(400, "the request needs one Host");
  m_request.keepsAlive = m_isOld ? headers.HasWord("connection", "keep-alive")
                                 : !headers.HasWord("connection", "close");
  if (!headers.Has("expect") || m_isOld) return true;
  m_request.awaitsContinue = IsSameWord(headers.Value("expect"), "100-continue");
  if (headers.Count("expect") > 1 || !m_request.awaitsContinue)
    return Fail(417, "only 100-continue can be expected here");
  return true;
}

bool HttpRequestReader::TakeLength() {
  const HttpHeaders& headers = m_request.headers;
  const bool hasLength = headers.Has("content-length");
  if (headers.Has("transfer-encoding")) {
    if (hasLength) return Fail(400, "a length and a transfer coding");
    if (m_isOld) return Fail(400, "a transfer coding in HTTP/1.0");
    if (headers.Count("transfer-encoding") > 1 ||
        !IsSameWord(headers.Value("transfer-encoding"), "chunked"))
      return Fail(501, "only the transfer coding \"chunked\" is known here");
    m_isChunked = true;
    m_chunks.Begin(m_limits.bodyBytes);
    return true;
  }
  if (!hasLength) return true;
  const auto length = PlainNumber(headers.Value("content-length"));
  if (headers.Count("content-length") > 1 || !length) return Fail(400, "a malformed length");
  if (*length > m_limits.bodyBytes) return Fail(413, "the body is too long");
  m_left = *length;
  return true;
}

// Memory for a body is taken as it comes, not as it is announced.
std::size_t HttpRequestReader::FeedBody(Bytes bytes) {
  if (!m_isChunked) {
    const Bytes piece = bytes.first(std::min(m_left, bytes.size()));
    m_request.body.insert(m_request.body.end(), piece.begin(), piece.end());
    m_left -= piece.size();
    if (m_left == 0) m_state = State::Complete;
    return piece.size();
  }
  const std::size_t used = m_chunks.Feed(bytes, m_request.body);
  switch (m_chunks.Now()) {
    case ChunkedBody::State::Complete:
      m_state = State::Complete;
      break;
    case ChunkedBody::State::Failed:
      Fail(400, m_chunks.Why());
      break;
    case ChunkedBody::State::TooLong:
      Fail(413, m_chunks.Why());
      break;
    case ChunkedBody::State::Going:
      break;
  }
  return used;
}
