// The events of a file of Chrome's trace format, one after the other.
//
// Shape    A file is an array of events, or an object whose `traceEvents` is one. The array may end
//          without its bracket: whoever wrote it was ended. Numbers may be texts. What no event can
//          be is passed over and counted.
// Owner    Borrows the tokens. An event's texts are its own.
// Errors   Next is false at the end, and where the file is damaged: Why then, with the place.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>

#include "import/json/json_pull.h"

struct ChromeEvent {
  char phase = 0;
  bool hasTime = false;
  std::int64_t timeNs = 0, durationNs = 0;
  std::string name, categories, process, thread, id;
  std::string args;      // " key=value" of each
  std::string argsName;  // of metadata: what is named
  std::string stack;
};

class ChromeEvents {
 public:
  explicit ChromeEvents(JsonPull& pull) : m_pull(pull) {}

  bool Next(ChromeEvent& event);
  // Empty: all of the file was read, but for a bracket at its end.
  const std::string& Why() const { return m_why; }
  std::uint64_t Strange() const { return m_strange; }
  bool HasStackFrames() const { return m_hasStackFrames; }

 private:
  enum class At { Begin, Events, Done };

  bool Enter();
  bool EnterNext();
  bool ReadEvent(ChromeEvent& event);
  bool ReadField(const std::string& key, ChromeEvent& event);
  bool ReadArgs(JsonPart part, ChromeEvent& event);
  bool ReadStack(JsonPart part, ChromeEvent& event);
  bool ReadScalar(JsonPart part, std::string& to);
  bool Finish();
  bool Fail();

  JsonPull& m_pull;
  At m_at = At::Begin;
  bool m_isObject = false, m_hasEvents = false, m_hasStackFrames = false;
  std::string m_why, m_key;
  std::uint64_t m_strange = 0;
};

// Microseconds with a fraction as nanoseconds. False: it is no number, or one beyond 292 years.
bool ReadMicroseconds(std::string_view text, std::int64_t& ns);
