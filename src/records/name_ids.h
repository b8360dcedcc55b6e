// The three spaces of name ids. An id has a meaning only in its own space.
//
//   AppNameId   one traced application's, in its segment, its ring and the file that it writes
//        |      SourceNames (quor/hub): by text
//   HubNameId   one service's, in its batches and in what it streams to monitors and services
//        |      NameMapper (quor/client/stream): by text
//   NameId      a document's or a file's
//
// A document's id is the plain number of TraceEvent_i and NameMap. The other two types do not
// convert: an id gets from one space to the next by a look-up, never by an assignment.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>

using NameId = std::uint16_t;
enum class AppNameId : std::uint16_t {};
enum class HubNameId : std::uint16_t {};
static_assert(sizeof(AppNameId) == sizeof(NameId) && sizeof(HubNameId) == sizeof(NameId));

constexpr std::size_t kNameIds = 65536;  // of one space

// The number of an id of any space, for a table and for the screen.
template <class Id>
constexpr std::uint16_t IdNumber(Id id) {
  static_assert(sizeof(Id) == sizeof(std::uint16_t));
  return static_cast<std::uint16_t>(id);
}

// The set of ids of one space that have been met.
template <class Id>
class IdSet {
 public:
  bool Has(Id id) const { return m_ids[IdNumber(id)]; }
  void Add(Id id) { m_ids[IdNumber(id)] = true; }
  void Remove(Id id) { m_ids[IdNumber(id)] = false; }
  void Clear() { m_ids.reset(); }

 private:
  std::bitset<kNameIds> m_ids;
};
