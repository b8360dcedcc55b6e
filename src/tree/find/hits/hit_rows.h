// The rows of a view that have a hit of the last search, for all that shows more of them than the
// one that the search stopped at: counts, lists, ticks beside the rows.
//
// Shape    Rows count from 0 and are known from the first one on: those behind Known() may have
//          hits that nobody has looked for yet. What goes at the front renumbers the others.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>

class FindHitRows {
 public:
  // Rows [0, Known()) were looked at.
  virtual int Known() const = 0;
  // They are all that there are now. More may come.
  virtual bool IsWhole() const = 0;
  // ---- the hits among the known rows
  virtual int Count() const = 0;
  virtual bool Has(int row) const = 0;
  virtual int Position(int row) const = 0;  // hits before this row
  virtual int Next(int row) const = 0;      // the first hit from this row on; -1: none
  virtual int RowOf(int hit) const = 0;     // by its number from 0; -1: none
  // Another number after every change, and another one than that of any other search; not 0.
  virtual std::uint64_t Version() const = 0;

  // Calls visit(row) for the hits in [from, end), in order.
  template <class Visit>
  void VisitIn(int from, int end, Visit&& visit) const {
    for (int row = Next(from); row != -1 && row < end; row = Next(row + 1)) visit(row);
  }

 protected:
  ~FindHitRows() = default;
};

// "12 of 4,301 hits" if the row has one, else "4,301 hits", "no hits"; "... so far" while rows are
// still to be looked at. `row` is -1 where none is meant.
std::string HitText(const FindHitRows& hits, int row);
