// The counts of a monitor's traces by one field: traces come at the end and leave at the beginning.
//
// A user reads the counts beside the list, so they are those of the traces that the list has now:
// what the monitor has removed is taken out of them again, and the filter of a value shows as many
// rows as the count says.
//
// Shape    A trace is noted when it comes, with the number of its key. Table counts what is noted;
//          it reads no trace again.
// Cost     Add: one pass over the text for patterns, else a look-up. Remove: nothing per trace but
//          its note of 16 bytes. Table: some nanoseconds for each noted trace, so its caller asks
//          as seldom as that needs.
// Errors   std::bad_alloc. A bounded number of keys is told apart (stat_table.h), those that have
//          gone not counted.
// Threads  One at a time.
#pragma once

#include <deque>

#include "statistics/stat_key.h"
#include "statistics/stat_table.h"

class LiveCounts {
 public:
  explicit LiveCounts(StatField field, const StatBounds& bounds = {});

  // The next trace. One that is not shown is not counted, but it leaves in its turn.
  void Add(const TraceEvent_i& trace, bool isShown);
  // The oldest ones have left. REQUIRES: not more than came.
  void Remove(std::size_t traces);
  std::size_t Noted() const { return m_notes.size(); }
  // Of all that are noted. Valid until the next call of any operation.
  const StatTable& Table();

 private:
  static constexpr std::uint32_t kHidden = StatTable::kOthers - 1;
  struct Note {
    WhereStamp stamp;
    std::uint32_t number;
  };
  void ForgetKeysWithoutTraces();

  const StatBounds m_bounds;
  StatKey m_key;
  StatTable m_table;
  std::deque<Note> m_notes;
};
