// By what traces can be counted.
//
// Threads  Pure.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "records/name_map.h"

enum class StatField : std::uint8_t {
  Component,
  Category,
  Application,
  Thread,    // with its process and machine
  Severity,  // of several the first, as in a filter text: info, warn, error; or none of these
  Pattern,   // see text_pattern.h
};
constexpr std::size_t kStatFields = 6;
constexpr std::array<StatField, kStatFields> kAllStatFields = {
    StatField::Component, StatField::Category, StatField::Application,
    StatField::Thread,    StatField::Severity, StatField::Pattern};

// "component", "pattern".
std::string_view WordOf(StatField field);
std::optional<StatField> StatFieldOfWord(std::string_view word);  // capitals do not matter

// A key is what one trace has: the bytes of its ids, its severity, its pattern.
//
// The value for the user: a name, "web-1/812/7" for a thread, "(none)" without a severity. A name
// may be empty.
std::string ShownValue(StatField field, std::string_view key, const NameMap& names);
// Keys of equal names are one value: two ids may have the same name.
std::string IdentityOf(StatField field, std::string_view key, const NameMap& names);
// The filter text that lets exactly the traces with this value through. Nothing: there is none
// (OnlyThisPattern).
std::optional<std::string> OnlyThisValue(StatField field, std::string_view key,
                                         const NameMap& names);

struct StatThread {
  NameId machine, process, thread;
};
StatThread ThreadOfKey(std::string_view key);
NameId IdOfKey(std::string_view key);
