// Random traces that share ids, names and texts, and their count said slowly.
#pragma once

#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "statistics/stat_counter.h"
#include "statistics/trace_count.h"
#include "support/make_event.h"

class RandomTraces {
 public:
  explicit RandomTraces(unsigned seed) : m_random(seed) {}

  EventPtr Make() {
    constexpr int kAttributes[] = {0, 1, 2, 4, 3, 6, 8, 20, 7};
    const char* const texts[] = {"took %d ms", "open \"%d\"", "id %d of %d", "done", "", "x%dy"};
    char text[64];
    std::snprintf(text, sizeof text, texts[Below(6)], static_cast<int>(Below(5000)),
                  static_cast<int>(Below(9)));
    TraceFields fields;
    fields.machine = static_cast<NameId>(1 + Below(2));
    fields.pid = static_cast<NameId>(10 + Below(3));
    fields.tid = static_cast<NameId>(20 + Below(4));
    fields.app = static_cast<NameId>(30 + Below(3));
    fields.component = static_cast<NameId>(40 + Below(5));
    fields.category = static_cast<NameId>(50 + Below(3));
    fields.attributes = kAttributes[Below(9)];
    fields.date = PackDate(2026, 11, 21 + Below(2));
    fields.time = PackTime(Below(24), Below(60), Below(60), Below(1000));
    fields.text = text;
    return MakeEvent(fields);
  }
  unsigned Below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

 private:
  std::mt19937 m_random;
};

// The key that a trace must have, by other means than those of the counter.
inline std::string SlowKey(StatField field, const TraceEvent_i& event) {
  const auto bytes = [](std::vector<NameId> ids) {
    return std::string(reinterpret_cast<const char*>(ids.data()), ids.size() * sizeof(NameId));
  };
  switch (field) {
    case StatField::Component:
      return bytes({event.GetComponentId()});
    case StatField::Category:
      return bytes({event.GetCategoryId()});
    case StatField::Application:
      return bytes({event.GetAppId()});
    case StatField::Thread:
      return bytes({event.GetMachineId(), event.GetPidId(), event.GetTidId()});
    case StatField::Severity: {
      const int bits = event.GetAttributes();
      return std::string(1, static_cast<char>(bits & 1 ? 0 : bits & 2 ? 1 : bits & 4 ? 2 : 3));
    }
    case StatField::Pattern:
      break;
  }
  TextPattern pattern;
  return std::string(pattern.Of(event.GetText()));
}

// The values in the order in which they came first.
struct SlowCount {
  std::vector<std::string> keys;
  std::map<std::string, Tally> tallies;

  void Add(StatField field, const TraceEvent_i& event) {
    const std::string key = SlowKey(field, event);
    if (tallies.find(key) == tallies.end()) keys.push_back(key);
    tallies[key].Add(std::uint64_t{event.GetDate()} << 32 | event.GetTime());
  }
};

// A list of events as what is counted; of each `every` one is left out.
class ListedTraces final : public CountedTraces {
 public:
  explicit ListedTraces(const std::vector<EventPtr>& events, std::size_t leftOut = 0)
      : m_events(events), m_leftOut(leftOut) {}
  std::size_t Size() const override { return m_events.size(); }
  bool Has(std::size_t place) const { return m_leftOut == 0 || place % m_leftOut != 0; }
  std::unique_ptr<Reader> MakeReader() const override { return std::make_unique<Walk>(*this); }

 private:
  class Walk final : public Reader {
   public:
    explicit Walk(const ListedTraces& all) : m_all(all) {}
    void Take(std::size_t from, std::size_t end, Events& events) override {
      for (; from < end; ++from)
        if (m_all.Has(from)) events.push_back(m_all.m_events[from].get());
    }

   private:
    const ListedTraces& m_all;
  };
  const std::vector<EventPtr>& m_events;
  const std::size_t m_leftOut;
};
