#include "notes/trace_notes.h"

#include <iterator>
#include <utility>

#include "base/text.h"

TraceNotes::TraceNotes() : m_table(std::make_shared<Table>()) {}

void TraceNotes::Own() {
  ++m_changes;
  if (!m_isShared) return;
  m_table = std::make_shared<Table>(*m_table);
  m_isShared = false;
}

std::shared_ptr<const WhereMarks> TraceNotes::Shared() {
  m_isShared = true;
  return m_table;
}

template <class Change>
void TraceNotes::Alter(std::uint64_t number, const std::uint8_t* record, Change change) {
  Own();
  const auto said = m_table->said.try_emplace(record).first;
  change(said->second);
  if (said->second.colour != 0 || !said->second.note.empty()) {
    m_records.insert_or_assign(m_records.end(), number, record);
  } else {
    m_table->said.erase(said);
    m_records.erase(number);
  }
}

void TraceNotes::Mark(std::uint64_t number, const std::uint8_t* record, std::uint8_t colour) {
  Alter(number, record, [colour](Said& said) { said.colour = colour; });
}

void TraceNotes::SetNote(std::uint64_t number, const std::uint8_t* record,
                         const std::string& note) {
  Alter(number, record, [&note](Said& said) { said.note = ReplaceMalformed(note); });
}

void TraceNotes::Set(std::uint64_t number, const std::uint8_t* record, std::uint8_t colour,
                     std::string&& note) {
  Alter(number, record, [&](Said& said) { said = {colour, std::move(note)}; });
}

std::optional<std::uint64_t> TraceNotes::Next(std::uint64_t number) const {
  const auto next = m_records.upper_bound(number);
  if (next == m_records.end()) return std::nullopt;
  return next->first;
}

std::optional<std::uint64_t> TraceNotes::Previous(std::uint64_t number) const {
  const auto next = m_records.lower_bound(number);
  if (next == m_records.begin()) return std::nullopt;
  return std::prev(next)->first;
}

void TraceNotes::Reserve(std::size_t size) {
  Own();
  m_table->said.reserve(size);
}

void TraceNotes::ForgetBefore(std::uint64_t number) {
  const auto left = m_records.lower_bound(number);
  if (left == m_records.begin()) return;
  Own();
  for (auto row = m_records.begin(); row != left; ++row) m_table->said.erase(row->second);
  m_records.erase(m_records.begin(), left);
}

void TraceNotes::Clear() {
  Own();
  m_table->said.clear();
  m_records.clear();
}
