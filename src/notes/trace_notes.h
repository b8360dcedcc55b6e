// The marks and notes of one document's traces.
//
// Shape    A trace is known by the address of its record. Its number (its place in the list + what
//          was popped before it) gives the order; both are REQUIRED to stay as long as it has a
//          mark or a note. A look-up costs the same however many there are.
// Owner    Copies the notes. Borrows the addresses, which it never reads.
// Threads  One. Shared() is for others: what it gives never changes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "where/where_marks.h"

class TraceNotes {
 public:
  TraceNotes();

  // 0 takes the mark away. REQUIRES: colour <= kMarkColours.
  void Mark(std::uint64_t number, const std::uint8_t* record, std::uint8_t colour);
  // An empty note takes it away. What is not UTF-8 in it is replaced.
  void SetNote(std::uint64_t number, const std::uint8_t* record, const std::string& note);
  // Both, of a trace that has none.
  void Set(std::uint64_t number, const std::uint8_t* record, std::uint8_t colour,
           std::string&& note);
  WhereMark Of(const std::uint8_t* record) const { return m_table->Of(record); }

  // The nearest marked or noted trace behind a number, or before it.
  std::optional<std::uint64_t> Next(std::uint64_t number) const;
  std::optional<std::uint64_t> Previous(std::uint64_t number) const;

  std::size_t size() const { return m_records.size(); }
  bool empty() const { return m_records.empty(); }
  // Of all: their numbers in order, and their records.
  const std::map<std::uint64_t, const std::uint8_t*>& Records() const { return m_records; }
  void Reserve(std::size_t size);

  // Before traces are released: forgets those with a lower number.
  void ForgetBefore(std::uint64_t number);
  void Clear();

  // Counts the changes.
  std::uint64_t Changes() const { return m_changes; }
  // The marks as they are now, for filters.
  std::shared_ptr<const WhereMarks> Shared();
  // Those that there are at each moment, for filters on the thread of the changes. REQUIRES: Shared
  // is never called.
  std::shared_ptr<const WhereMarks> Live() const { return m_table; }

 private:
  struct Said {
    std::uint8_t colour = 0;
    std::string note;
  };
  struct Table final : WhereMarks {
    WhereMark Of(const std::uint8_t* record) const override {
      const auto found = said.find(record);
      if (found == said.end()) return {};
      return {found->second.colour, found->second.note};
    }
    std::unordered_map<const std::uint8_t*, Said> said;
  };
  template <class Change>
  void Alter(std::uint64_t number, const std::uint8_t* record, Change change);
  // Before a change: what was given away stays as it is.
  void Own();

  std::shared_ptr<Table> m_table;
  bool m_isShared = false;
  std::map<std::uint64_t, const std::uint8_t*> m_records;
  std::uint64_t m_changes = 0;
};
