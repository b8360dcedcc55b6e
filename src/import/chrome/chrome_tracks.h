// Events of Chrome's trace format as steps on threads, so that begins and ends nest.
//
// Shape    A track is a thread, or the asynchronous events of one category of a process. `B` and
//          `E` of a thread belong together as brackets do, in the order of their times; `b` and
//          `e` so by their ids. Spans of a thread that overlap without nesting are on further
//          lanes.
// Owner    Owns the events until they are taken.
// Threads  One.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "import/chrome/chrome_event.h"
#include "quor/lanes/span_lanes.h"

struct ChromeStep {
  enum Kind : std::uint8_t { Begin, End, Single };
  Kind kind = Single;
  std::int64_t timeNs = 0;  // of its place: on a lane it does not run backwards
  std::uint32_t lane = 0;
  const ChromeEvent* event = nullptr;  // with which it began
  const ChromeEvent* end = nullptr;    // of an End: with which it ended, if that is another
};

struct ChromeTrackKey {
  std::string process, thread;
  bool isAsync = false;  // `thread` is a category then

  auto operator<=>(const ChromeTrackKey&) const = default;
};

class ChromeTrack {
 public:
  void Add(ChromeEvent event) { m_events.push_back(std::move(event)); }
  // The steps of all that has come. What has no end yet stays for the next time, but for the last
  // one. The events of the steps are valid until Forget.
  std::vector<ChromeStep> Take(bool isLast);
  // Forgets what was taken.
  void Forget();
  bool IsEmpty() const { return m_events.empty(); }
  const std::vector<ChromeEvent>& Events() const { return m_events; }

 private:
  static constexpr std::size_t kNone = SIZE_MAX;
  struct Bracket {
    std::size_t begin, end = kNone;  // places of events
    std::size_t parent = LaneSpan::kAnyParent;
    bool isOpen = false;
  };
  using Open = std::map<std::string, std::vector<std::size_t>>;  // brackets by id

  void Pair();
  void PairOne(std::size_t place, Open& open);
  void LeaveOpen();
  std::vector<LaneSpan> Spans() const;

  std::vector<ChromeEvent> m_events;
  std::vector<Bracket> m_brackets;
  std::vector<bool> m_stays;  // by event
  SpanLanes m_lanes;
};
