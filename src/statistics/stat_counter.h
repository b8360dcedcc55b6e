// Counts the traces of one piece by one field.
//
// Shape    Add takes any traces. Take gives what came since the last Take: each key with its tally,
//          in the order in which the keys came first. So the parts of pieces, joined in the order
//          of the pieces (stat_table.h), are the count of all their traces at once.
// Errors   std::bad_alloc. A part has at most as many keys as the piece has traces.
// Threads  One at a time.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "records/trace_event.h"
#include "statistics/key_table.h"
#include "statistics/stat_key.h"
#include "statistics/tally.h"

struct StatPart {
  struct Entry {
    std::uint64_t hash;  // KeyTable::HashOf
    std::size_t place, length;
    Tally tally;
  };
  std::string bytes;  // of the keys
  std::vector<Entry> entries;

  std::string_view KeyOf(const Entry& entry) const {
    return std::string_view(bytes).substr(entry.place, entry.length);
  }
};

class StatCounter {
 public:
  explicit StatCounter(StatField field);

  void Add(const TraceEvent_i& event) {
    if (const std::uint8_t* const record = event.Record())
      AddRecord(RawTrace(record));
    else
      AddOther(event);
  }
  StatPart Take();

 private:
  // A key and what came of it since the last Take; position + 1 of its tally, 0: none.
  using Place = std::uint32_t;

  void AddRecord(const RawTrace& trace) {
    const std::uint32_t number = NumberOf(trace);
    if (number >= m_places.size()) m_places.resize(number + 1);
    Place& place = m_places[number];
    if (place == 0) {
      m_tallies.push_back({number, {}});
      place = static_cast<Place>(m_tallies.size());
    }
    m_tallies[place - 1].tally.Add(StampOf(trace));
  }
  // Ids and severities are their own numbers; threads and patterns have those of the table.
  std::uint32_t NumberOf(const RawTrace& trace) {
    switch (m_field) {
      case StatField::Component:
        return trace.ComponentId();
      case StatField::Category:
        return trace.CategoryId();
      case StatField::Application:
        return trace.AppId();
      case StatField::Thread:
        return NumberOfThread(trace);
      case StatField::Severity:
        return StatKey::SeverityOf(trace.Attributes());
      case StatField::Pattern:
        break;
    }
    return NumberOfKey(m_pattern.Of(trace.Text()));
  }
  std::uint32_t NumberOfThread(const RawTrace& trace);
  std::uint32_t NumberOfKey(std::string_view key);
  void AddOther(const TraceEvent_i& event);
  void AppendKey(std::uint32_t number, StatPart& part) const;

  struct Counted {
    std::uint32_t number;
    Tally tally;
  };
  // The threads that came last, by a hash of their ids.
  static constexpr unsigned kThreadBits = 10;
  struct KnownThread {
    std::uint64_t ids = ~std::uint64_t{0};  // 48 bits: no thread has this
    std::uint32_t number = 0;
  };

  const StatField m_field;
  TextPattern m_pattern;
  KeyTable m_keys;
  std::vector<Place> m_places;  // by number
  std::vector<Counted> m_tallies;
  std::array<KnownThread, std::size_t{1} << kThreadBits> m_threads;
};
