// The applications that this machine knows: their trace maps, and their settings and sinks with the
// time for which these apply.
//
// Shape    A trace is a component and a category of an application. Its id is stable for the
//          application, also over restarts, and less than 0xFFFF. Submitted settings apply as long
//          as an instance runs or a handle is open; after that the defaults apply again. Settings
//          that were submitted while no instance ran wait for the next instance, with or without a
//          handle, because otherwise a command that prepares an application would have no effect.
//          Trace maps are kept for as many applications as there is room for: the one that was not
//          needed for the longest time makes room for a new one.
// Owner    Keeps everything in memory and writes changes to the store.
// Errors   If the store cannot be written, only a restart loses anything. The log says so.
// Threads  One.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quor/catalogue/catalogue_app.h"

class CatalogueStore;

class Catalogue {
 public:
  static constexpr std::size_t kAppsMax = 4096;
  // At the service of a machine, where names begin with their account and a slash.
  static constexpr std::size_t kAppsOfAccountMax = 1024;
  static constexpr std::size_t kNameBytesMax = 4096;
  static constexpr std::size_t kKeptBytesMax = 2000;
  static constexpr std::size_t kMapBytesMax = 3u << 20;  // a trace map fits into one frame
  // Limit of all trace maps together. Beyond it, maps that nobody holds are forgotten. It is enough
  // for some hundred applications of the size of a large program.
  static constexpr std::size_t kAllMapsBytesMax = 16u << 20;

  void BoundAccounts() { m_boundsAccounts = true; }
  // Reads the store, which may be null. Settings whose holders have all ended do not apply.
  Catalogue(std::unique_ptr<CatalogueStore> store, std::uint32_t defaultSettings);
  ~Catalogue();

  CatalogueApp* Find(const std::string& name);
  bool Has(const std::string& name) const { return m_apps.contains(name); }
  // Null when too many run or are held, or for an empty or too long name.
  CatalogueApp* Enter(const std::string& name);
  // kNoTraceId when the application has too many traces.
  std::uint32_t EnterTrace(CatalogueApp& app, const std::string& component,
                           const std::string& category);
  // The same for many, which are stored together: StoreTraces stores those from this id on.
  std::uint32_t AddTrace(CatalogueApp& app, const std::string& component,
                         const std::string& category);
  void StoreTraces(CatalogueApp& app, std::uint32_t from);

  // An instance that is only found does not use up prepared settings until it begins.
  void FindInstance(CatalogueApp& app, std::uint32_t pid);
  void BeginInstance(CatalogueApp& app, std::uint32_t pid);
  void OpenHandle(CatalogueApp& app, std::uint32_t pid);
  // With the last holder submitted settings cease to apply. `app` may be gone afterwards.
  void EndInstance(CatalogueApp& app, std::uint32_t pid);
  void EndFound(CatalogueApp& app, std::uint32_t pid);
  void CloseHandle(CatalogueApp& app, std::uint32_t pid);
  // Some time after a restart: holders that have not come back are removed.
  void EndGrace();

  struct Submitted {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> settings;  // id, word; unknown: ignored
    std::optional<LinkSink> sink;
  };
  void Submit(CatalogueApp& app, const Submitted& what);
  // Keeps rules until ForgetWaiting, and gives the traces that they are for. False: too many.
  bool Keep(CatalogueApp& app, const SettingsText& rules, std::vector<std::uint32_t>* traces);
  // Takes back what is kept or prepared. False: nothing was. `app` may be gone afterwards.
  bool ForgetWaiting(CatalogueApp& app);
  std::vector<const CatalogueApp*> Waiting() const;  // those that do not run

  // Those that run or are held, sorted by name.
  std::vector<std::string> Registered() const;
  std::vector<std::string> Names() const;  // all
  std::uint32_t DefaultSettings() const { return m_defaultSettings; }
  void SetDefaultSettings(std::uint32_t settings) { m_defaultSettings = settings & kSettingsBits; }

 private:
  std::uint32_t FirstSettings(const CatalogueApp& app, const CatalogueTrace& trace) const;
  void Release(CatalogueApp& app);
  void Forget(CatalogueApp& app);
  void StoreHolders(CatalogueApp& app);
  void Erase(CatalogueApp& app);
  // Of names that begin so.
  bool ForgetOldest(const std::string& begin = {});
  std::string BeginOf(const std::string& name) const;
  std::size_t CountOf(const std::string& begin) const;

  std::unique_ptr<CatalogueStore> m_store;
  std::uint32_t m_defaultSettings;
  std::map<std::string, CatalogueApp> m_apps;
  std::size_t m_mapBytes = 0;  // of all applications
  std::uint64_t m_uses = 0;
  bool m_boundsAccounts = false;
};

LinkSink DefaultSink();  // of a new application
