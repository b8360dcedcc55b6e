// Which applications this machine knows: their trace maps, what was configured for them, and how
// long that is in force.
//
// Shape    A trace is a component and a category of an application; its id is stable for the
//          application, also over restarts, and less than 0xFFFF. What was submitted is in force as
//          long as an instance runs or a handle is open; then the defaults hold again. What was
//          submitted while no instance ran waits for the next one first, with or without a handle:
//          else a command that prepares an application would have no effect. The trace map stays,
//          of as many applications as there is room for: the one that was not needed for longest
//          makes room for a new one.
// Owner    Keeps everything; writes through to the store.
// Errors   A store that cannot be written costs only what a restart would have kept: told in the
//          log.
// Threads  One.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "quor/ring/link.h"

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
  bool submitted = false;
  bool prepared = false;  // submitted, and no instance has run since
  bool awaited = false;   // held before a restart: its holders may still be on their way back
  std::multiset<std::uint32_t> instances;  // pids
  std::multiset<std::uint32_t> found;      // pids of those that have not begun: dead, or silent
  std::multiset<std::uint32_t> handles;    // pids of those that hold one; 0: on another machine
  std::int64_t row = 0;                    // in the store; 0: not there, or not as a whole
  std::uint64_t used = 0;                  // when it was last needed: grows over all of them
  std::size_t mapBytes = 0;                // of the names of all traces
  bool IsHeld() const { return Instances() != 0 || !handles.empty(); }
  std::size_t Instances() const { return instances.size() + found.size(); }
};

class CatalogueStore;

class Catalogue {
 public:
  static constexpr std::size_t kAppsMax = 4096;
  static constexpr std::size_t kNameBytesMax = 4096;
  static constexpr std::size_t kMapBytesMax = 3u << 20;  // a trace map fits into one frame
  // Of all trace maps together, before those go that nobody holds: some hundred applications of the
  // size of a large program.
  static constexpr std::size_t kAllMapsBytesMax = 16u << 20;

  // Reads what the store has, which may be null. What nobody holds any more who held it is not in
  // force.
  Catalogue(std::unique_ptr<CatalogueStore> store, std::uint32_t defaultSettings);
  ~Catalogue();

  CatalogueApp* Find(const std::string& name);
  // Null when too many run or are held, or for a name that is none or too long.
  CatalogueApp* Enter(const std::string& name);
  // kNoTraceId when the application has too many.
  std::uint32_t EnterTrace(CatalogueApp& app, const std::string& component,
                           const std::string& category);

  // One that is known by what it left or shows alone uses up nothing of what was prepared, until it
  // begins.
  void FindInstance(CatalogueApp& app, std::uint32_t pid);
  void BeginInstance(CatalogueApp& app, std::uint32_t pid);
  void OpenHandle(CatalogueApp& app, std::uint32_t pid);
  // With the last holder what was submitted is in force no more. It may be forgotten then, at once
  // where nothing is known of it but its name: `app` is not to be used any more.
  void EndInstance(CatalogueApp& app, std::uint32_t pid);
  void EndFound(CatalogueApp& app, std::uint32_t pid);
  void CloseHandle(CatalogueApp& app, std::uint32_t pid);
  // Some time after a restart: those that have not come back hold nothing any more.
  void EndGrace();

  struct Submitted {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> settings;  // id, word; unknown: ignored
    std::optional<LinkSink> sink;
  };
  void Submit(CatalogueApp& app, const Submitted& what);

  // Those that run or are held, in the order of their names.
  std::vector<std::string> Registered() const;
  std::uint32_t DefaultSettings() const { return m_defaultSettings; }

 private:
  void Release(CatalogueApp& app);
  void Forget(CatalogueApp& app);
  void StoreHolders(CatalogueApp& app);
  void Erase(CatalogueApp& app);
  bool ForgetOldest();

  std::unique_ptr<CatalogueStore> m_store;
  const std::uint32_t m_defaultSettings;
  std::map<std::string, CatalogueApp> m_apps;
  std::size_t m_mapBytes = 0;  // of all applications
  std::uint64_t m_uses = 0;
};

// The sink of a new application.
LinkSink DefaultSink();
