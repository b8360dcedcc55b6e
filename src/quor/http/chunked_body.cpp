#include "quor/http/chunked_body.h"

#include <algorithm>
#include <charconv>

#include "quor/http/headers.h"

void ChunkedBody::Begin(std::size_t bytesMax) {
  m_state = State::Going;
  m_part = Part::Size;
  m_room = bytesMax;
  m_left = m_overhead = m_trailer = 0;
  m_line.clear();
  m_why.clear();
}

void ChunkedBody::Fail(const char* why, State state) {
  m_state = state;
  m_why = why;
}

std::size_t ChunkedBody::Feed(Bytes bytes, std::vector<std::uint8_t>& body) {
  std::size_t used = 0;
  while (m_state == State::Going && used < bytes.size()) {
    const Bytes rest = bytes.subspan(used);
    used += m_part == Part::Data ? FeedData(rest, body) : FeedLine(rest);
  }
  return used;
}

std::size_t ChunkedBody::FeedData(Bytes bytes, std::vector<std::uint8_t>& body) {
  const Bytes piece = bytes.first(std::min(m_left, bytes.size()));
  body.insert(body.end(), piece.begin(), piece.end());
  m_left -= piece.size();
  if (m_left == 0) m_part = Part::AfterData;
  return piece.size();
}

std::size_t ChunkedBody::FeedLine(Bytes bytes) {
  const std::size_t look = std::min(bytes.size(), kLineBytesMax + 1 - m_line.size());
  const auto end =
      std::find(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(look), '\n');
  const bool whole = end != bytes.begin() + static_cast<std::ptrdiff_t>(look);
  const std::size_t used = static_cast<std::size_t>(end - bytes.begin()) + (whole ? 1 : 0);
  m_line.append(reinterpret_cast<const char*>(bytes.data()), used);
  m_overhead += used;
  if (m_line.size() > kLineBytesMax || m_overhead > kOverheadBytesMax)
    Fail("too much between the pieces of the body", State::TooLong);
  else if (whole)
    TakeLine();
  return used;
}

void ChunkedBody::TakeLine() {
  if (m_line.size() < 2 || m_line[m_line.size() - 2] != '\r')
    return Fail("a line of the chunked body does not end with CR LF");
  m_line.resize(m_line.size() - 2);
  if (m_part == Part::AfterData && !m_line.empty())
    return Fail("a piece of the body is longer than its size");
  if (m_part == Part::Size)
    TakeSize();
  else if (m_part == Part::AfterData)
    m_part = Part::Size;
  else
    TakeTrailerLine();
  m_line.clear();
}

void ChunkedBody::TakeSize() {
  const char* const end = m_line.data() + m_line.size();
  std::size_t size = 0;
  const auto [stop, wrong] = std::from_chars(m_line.data(), end, size, 16);
  const bool signless = !m_line.empty() && m_line.front() != '-';
  if (wrong == std::errc::result_out_of_range && signless)
    return Fail("the body is too long", State::TooLong);
  if (wrong != std::errc() || !signless) return Fail("a piece of the body has no size");
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t'; };
  const std::string_view after = TrimmedBlanks({stop, static_cast<std::size_t>(end - stop)});
  if ((!after.empty() && after.front() != ';') ||
      std::any_of(after.begin(), after.end(), isControl))
    return Fail("a piece of the body has a malformed size");
  if (size > m_room) return Fail("the body is too long", State::TooLong);
  m_room -= size;
  m_left = size;
  m_part = size > 0 ? Part::Data : Part::Trailer;
}

void ChunkedBody::TakeTrailerLine() {
  if (m_line.empty()) {
    m_state = State::Complete;
    return;
  }
  m_trailer += m_line.size();
  if (m_trailer > kTrailerBytesMax) return Fail("the trailer is too long", State::TooLong);
  HttpHeaders trailer;
  std::string why;
  if (!trailer.Parse(m_line + "\r\n", 1, &why)) Fail("a malformed trailer line");
}
