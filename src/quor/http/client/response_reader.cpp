#include "quor/http/client/response_reader.h"

#include <algorithm>

namespace {

constexpr std::string_view kLineEnd = "\r\n", kHeadEnd = "\r\n\r\n";

}  // namespace

void HttpResponseReader::Next() {
  m_state = State::Head;
  m_head.clear();
  m_response = {};
  m_interim = 0;
}

bool HttpResponseReader::Fail(std::string why) {
  m_state = State::Failed;
  m_why = std::move(why);
  return false;
}

std::size_t HttpResponseReader::Feed(Bytes bytes) {
  std::size_t used = 0;
  while (used < bytes.size() && (m_state == State::Head || m_state == State::Body)) {
    const Bytes rest = bytes.subspan(used);
    used += m_state == State::Head ? FeedHead(rest) : FeedBody(rest);
  }
  return used;
}

void HttpResponseReader::End() {
  if (m_state == State::Body && m_length == Length::ToTheEnd) {
    m_state = State::Complete;
    return;
  }
  if (m_state != State::Complete && m_state != State::Failed)
    Fail(IsIdle() ? "the connection was closed" : "the connection was closed within an answer");
}

std::size_t HttpResponseReader::FeedHead(Bytes bytes) {
  const std::size_t had = m_head.size();
  const std::size_t taken = std::min(bytes.size(), kHeadBytesMax + 1 - had);
  m_head.append(reinterpret_cast<const char*>(bytes.data()), taken);
  const std::size_t from = had < kHeadEnd.size() ? 0 : had - kHeadEnd.size();
  const std::size_t end = m_head.find(kHeadEnd, from);
  if (end == m_head.npos) {
    if (m_head.size() > kHeadBytesMax) Fail("the head of the answer is too long");
    return taken;
  }
  m_head.resize(end + kHeadEnd.size());
  const std::size_t used = m_head.size() - had;
  TakeHead();
  return used;
}

bool HttpResponseReader::TakeHead() {
  const std::string_view head = m_head;
  const std::size_t lineEnd = head.find(kLineEnd);
  if (!TakeFirstLine(head.substr(0, lineEnd))) return false;
  HttpHeaders headers;
  std::string why;
  const std::string_view lines = head.substr(lineEnd + 2, head.size() - lineEnd - 4);
  if (!headers.Parse(lines, kHeaderLinesMax, &why)) return Fail("a malformed answer: " + why);
  if (m_response.status < 200) {
    if (m_response.status == 101 || ++m_interim > kInterimMax)
      return Fail("an answer that was not asked for");
    m_head.clear();
    return true;
  }
  m_response.retryAfter = headers.Value("retry-after");
  m_response.contentType = headers.Value("content-type");
  m_response.keepsAlive = m_isOld ? headers.HasWord("connection", "keep-alive")
                                  : !headers.HasWord("connection", "close");
  if (!TakeLength(headers)) return false;
  if (m_length == Length::ToTheEnd) m_response.keepsAlive = false;
  const bool hasBody = m_length != Length::None && (m_length != Length::Known || m_left > 0);
  m_state = hasBody ? State::Body : State::Complete;
  return true;
}

// "HTTP/1.1 200 OK"; the words may be missing.
bool HttpResponseReader::TakeFirstLine(std::string_view line) {
  constexpr std::string_view kNew = "HTTP/1.1 ", kOld = "HTTP/1.0 ";
  constexpr std::size_t kDigits = 3;
  m_isOld = line.starts_with(kOld);
  if (!m_isOld && !line.starts_with(kNew)) return Fail("this is no HTTP/1.1");
  const std::string_view digits = line.substr(kNew.size(), kDigits);
  const auto status = PlainNumber(digits);
  const std::string_view rest = line.substr(std::min(line.size(), kNew.size() + kDigits));
  if (digits.size() != kDigits || !status || *status < 100 || *status > 599 ||
      (!rest.empty() && rest.front() != ' '))
    return Fail("an answer without a status");
  m_response.status = static_cast<int>(*status);
  return true;
}

// What two programs could read as answers of two lengths is refused.
bool HttpResponseReader::TakeLength(const HttpHeaders& headers) {
  m_length = Length::None;
  if (m_response.status == 204 || m_response.status == 304) return true;
  const bool hasLength = headers.Has("content-length");
  if (headers.Has("transfer-encoding")) {
    if (hasLength || m_isOld || headers.Count("transfer-encoding") > 1 ||
        !IsSameWord(headers.Value("transfer-encoding"), "chunked"))
      return Fail("an answer with a coding that is not known");
    m_length = Length::Chunked;
    m_chunks.Begin(kBodyBytesMax);
    return true;
  }
  m_length = hasLength ? Length::Known : Length::ToTheEnd;
  if (!hasLength) return true;
  const auto length = PlainNumber(headers.Value("content-length"));
  if (headers.Count("content-length") > 1 || !length) return Fail("an answer of no length");
  m_left = *length;
  return true;
}

// The rest of it is not read.
void HttpResponseReader::Cut() {
  m_response.keepsAlive = false;
  m_state = State::Complete;
}

std::size_t HttpResponseReader::FeedBody(Bytes bytes) {
  if (m_length == Length::Chunked) {
    const std::size_t used = m_chunks.Feed(bytes, m_response.body);
    if (m_chunks.Now() == ChunkedBody::State::Complete) m_state = State::Complete;
    if (m_chunks.Now() == ChunkedBody::State::Failed) Fail("a malformed answer: " + m_chunks.Why());
    if (m_chunks.Now() == ChunkedBody::State::TooLong) Cut();
    return used;
  }
  const bool known = m_length == Length::Known;
  const std::size_t piece = known ? std::min(m_left, bytes.size()) : bytes.size();
  const std::size_t kept = std::min(piece, kBodyBytesMax - m_response.body.size());
  m_response.body.insert(m_response.body.end(), bytes.begin(),
                         bytes.begin() + static_cast<std::ptrdiff_t>(kept));
  if (known) m_left -= piece;
  if (known && m_left == 0)
    m_state = State::Complete;
  else if (kept < piece || m_response.body.size() == kBodyBytesMax)
    Cut();
  return piece;
}
