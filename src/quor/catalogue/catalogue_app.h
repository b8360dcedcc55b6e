// An application in the catalogue: its trace map, its settings and who holds it.
//
// Owner    Values.
// Threads  One.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "quor/link/link.h"
#include "quor/settings/settings_text.h"

constexpr std::uint32_t kDefaultSettings = 7;  // Support: Info, Warn, Error
constexpr std::uint32_t kSettingsBits = 0x031F;
constexpr std::uint32_t kNoTraceId = 0xFFFF;

struct CatalogueTrace {
  std::string component, category;
  std::uint32_t settings = kDefaultSettings;
};

struct CatalogueApp {
  std::string name;
  std::vector<CatalogueTrace> traces;  // by id
  std::map<std::pair<std::string, std::string>, std::uint32_t> ids;
  LinkSink sink;
  SettingsText kept;  // instead of the defaults, for all instances
  bool submitted = false;
  bool prepared = false;                   // submitted, and no instance has run since
  bool awaited = false;                    // held before a restart: its holders may still come back
  std::multiset<std::uint32_t> instances;  // pids
  std::multiset<std::uint32_t> found;      // pids of instances that have not begun: dead, or silent
  std::multiset<std::uint32_t> handles;    // pids of the holders of handles; 0: on another machine
  std::int64_t row = 0;                    // in the store; 0: not stored, or not completely
  std::uint64_t used = 0;                  // when it was last needed: a counter of the catalogue
  std::size_t mapBytes = 0;                // of the names of all traces
  bool IsHeld() const { return Instances() != 0 || !handles.empty(); }
  std::size_t Instances() const { return instances.size() + found.size(); }
};
