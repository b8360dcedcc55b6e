#include "import/chrome/chrome_event.h"

#include <charconv>
#include <cmath>

#include "import/chrome/value_text.h"

namespace {

constexpr std::int64_t kNsOfUs = 1000;
// A year's worth of room is left, so that sums of two do not overflow.
constexpr double kMostUs = 4.6e15;

bool ReadRounded(std::string_view text, std::int64_t& ns) {
  double us = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), us);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  if (!std::isfinite(us) || std::abs(us) > kMostUs) return false;
  ns = std::llround(us * static_cast<double>(kNsOfUs));
  return true;
}

}  // namespace

// A double would lose the nanoseconds of times since 1970.
bool ReadMicroseconds(std::string_view text, std::int64_t& ns) {
  const bool isNegative = text.starts_with('-');
  const std::string_view digits = text.substr(isNegative ? 1 : 0);
  std::int64_t whole = 0, fraction = 0;
  std::size_t at = 0;
  const auto isDigit = [&] { return at < digits.size() && digits[at] >= '0' && digits[at] <= '9'; };
  for (; isDigit(); ++at) {
    whole = whole * 10 + (digits[at] - '0');
    if (static_cast<double>(whole) > kMostUs) return false;
  }
  if (at == 0) return ReadRounded(text, ns);
  if (at < digits.size() && digits[at] == '.') {
    ++at;
    for (std::int64_t worth = 100; isDigit(); ++at, worth /= 10)
      fraction += worth * (digits[at] - '0');
  }
  if (at < digits.size()) return ReadRounded(text, ns);
  ns = whole * kNsOfUs + fraction;
  if (isNegative) ns = -ns;
  return true;
}

bool ChromeEvents::Fail() {
  m_at = At::Done;
  m_why = m_pull.Why();
  return false;
}

bool ChromeEvents::Next(ChromeEvent& event) {
  if (m_at == At::Begin && !Enter()) return false;
  while (m_at == At::Events) {
    const JsonPart part = m_pull.Next();
    if (part == JsonPart::EndArray) {
      if (!EnterNext()) return false;
      continue;
    }
    if (part == JsonPart::Bad && m_pull.IsCut() && !m_isObject && m_pull.Depth() == 1) {
      m_at = At::Done;
      return false;
    }
    if (part == JsonPart::Bad) return Fail();
    if (part != JsonPart::BeginObject) {
      ++m_strange;
      if (!m_pull.Skip(part)) return Fail();
      continue;
    }
    event = {};
    if (!ReadEvent(event)) return Fail();
    return true;
  }
  return false;
}

bool ChromeEvents::Enter() {
  const JsonPart part = m_pull.Next();
  if (part == JsonPart::Bad) return Fail();
  m_isObject = part == JsonPart::BeginObject;
  if (m_isObject) return EnterNext();
  m_at = part == JsonPart::BeginArray ? At::Events : At::Done;
  if (m_at == At::Done) m_why = "it holds no array of events";
  return m_at == At::Events;
}

// To the (next) array of events in the object.
bool ChromeEvents::EnterNext() {
  if (!m_isObject) return Finish();
  for (;;) {
    const JsonPart key = m_pull.Next();
    if (key == JsonPart::EndObject) return Finish();
    if (key == JsonPart::Bad) return Fail();
    m_key = m_pull.Text();
    const JsonPart part = m_pull.Next();
    if (m_key == "traceEvents" && part == JsonPart::BeginArray) {
      m_at = At::Events;
      return m_hasEvents = true;
    }
    if (m_key == "stackFrames") m_hasStackFrames = true;
    if (!m_pull.Skip(part)) return Fail();
  }
}

// Nothing but space may follow.
bool ChromeEvents::Finish() {
  m_at = At::Done;
  if (m_isObject && !m_hasEvents) {
    m_why = "it holds no array of events";
    return false;
  }
  const JsonPart part = m_pull.Next();
  if (part == JsonPart::Bad) return Fail();
  if (part != JsonPart::End)
    m_why = "line " + std::to_string(m_pull.Line()) + ", byte " + std::to_string(m_pull.Place()) +
            ": something follows the events";
  return false;
}

bool ChromeEvents::ReadEvent(ChromeEvent& event) {
  for (;;) {
    const JsonPart key = m_pull.Next();
    if (key == JsonPart::EndObject) break;
    if (key == JsonPart::Bad) return false;
    m_key = m_pull.Text();
    if (!ReadField(m_key, event)) return false;
  }
  return true;
}

bool ChromeEvents::ReadField(const std::string& key, ChromeEvent& event) {
  const JsonPart part = m_pull.Next();
  if (part == JsonPart::Bad) return false;
  if (key == "args") return ReadArgs(part, event);
  if (key == "stack") return ReadStack(part, event);
  if (key == "name") return ReadScalar(part, event.name);
  if (key == "cat") return ReadScalar(part, event.categories);
  if (key == "pid") return ReadScalar(part, event.process);
  if (key == "tid") return ReadScalar(part, event.thread);
  if (key == "id") return ReadScalar(part, event.id);
  if (key == "id2") {
    // {"local": ...} or {"global": ...}: only whether two are the same counts.
    event.id.clear();
    return AppendValue(m_pull, part, event.id);
  }
  std::string text;
  if (key == "ph" || key == "ts" || key == "dur") {
    if (!ReadScalar(part, text)) return false;
    if (key == "ph") event.phase = text.size() == 1 ? text[0] : 0;
    if (key == "ts") event.hasTime = ReadMicroseconds(text, event.timeNs);
    if (key == "dur" && !ReadMicroseconds(text, event.durationNs)) event.durationNs = 0;
    return true;
  }
  return m_pull.Skip(part);
}

bool ChromeEvents::ReadArgs(JsonPart part, ChromeEvent& event) {
  if (part != JsonPart::BeginObject) {
    event.args += " args=";
    return AppendWord(m_pull, part, event.args);
  }
  for (;;) {
    const JsonPart key = m_pull.Next();
    if (key == JsonPart::EndObject) return true;
    if (key == JsonPart::Bad) return false;
    const bool isName = m_pull.Text() == "name";
    event.args += ' ';
    event.args += m_pull.Text();
    event.args += '=';
    const JsonPart value = m_pull.Next();
    if (isName && (value == JsonPart::String || value == JsonPart::Number))
      event.argsName = m_pull.Text();
    if (!AppendWord(m_pull, value, event.args)) return false;
  }
}

// A line for each frame. A call stack of another form stays what it is in JSON.
bool ChromeEvents::ReadStack(JsonPart part, ChromeEvent& event) {
  if (part != JsonPart::BeginArray) return AppendValue(m_pull, part, event.stack);
  for (;;) {
    const JsonPart frame = m_pull.Next();
    if (frame == JsonPart::EndArray) return true;
    if (frame == JsonPart::Bad) return false;
    if (!event.stack.empty()) event.stack += '\n';
    if (frame == JsonPart::String)
      event.stack += m_pull.Text();
    else if (!AppendValue(m_pull, frame, event.stack))
      return false;
    Bound(event.stack);
  }
}

bool ChromeEvents::ReadScalar(JsonPart part, std::string& to) {
  to.clear();
  if (part == JsonPart::String || part == JsonPart::Number) {
    to = m_pull.Text();
    return true;
  }
  return part == JsonPart::Null || AppendValue(m_pull, part, to);
}
