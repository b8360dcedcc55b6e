// The catalogue on disk: one SQLite database in the state folder, in WAL mode.
//
// Owner    Holds the database exclusively: a second service on the same state is refused.
// Errors   Open returns null and a reason. A damaged database is renamed to *.damaged and a new one
//          is begun; the log says so. A failed write changes nothing and is logged once. Its data
//          is written with the application's next write.
// Threads  One.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "quor/catalogue/catalogue.h"

struct sqlite3;
struct sqlite3_stmt;

struct StoredApp {
  CatalogueApp app;  // without ids
  std::vector<std::uint32_t> holders;
};

class CatalogueStore {
 public:
  // `isTaken`: set when the database is good but cannot be used, because another service has it or
  // a newer one has written it.
  static std::unique_ptr<CatalogueStore> Open(const std::string& path, std::string* why,
                                              bool* isTaken = nullptr);
  ~CatalogueStore();
  CatalogueStore(const CatalogueStore&) = delete;
  CatalogueStore& operator=(const CatalogueStore&) = delete;

  std::vector<StoredApp> ReadAll();
  void WriteApp(CatalogueApp& app);  // sets its row
  void EraseApp(CatalogueApp& app);
  void WriteTraces(CatalogueApp& app, std::uint32_t from);  // from this id on
  void WriteSettings(CatalogueApp& app);  // the sink, and the settings of all traces
  void WriteKept(CatalogueApp& app);
  void WriteHolders(CatalogueApp& app, const std::set<std::uint32_t>& pids);

 private:
  class Statement;
  explicit CatalogueStore(sqlite3* database) : m_database(database) {}
  enum class State { Good, Unusable, Taken, Damaged };
  State Prepare(std::string* why);
  State Check(std::string* why);
  bool Run(const char* sql);
  template <class Put>
  void Change(CatalogueApp& app, Put&& put);
  void PutWhole(CatalogueApp& app);
  void PutSettings(const CatalogueApp& app);
  void PutKept(const CatalogueApp& app);
  void PutTraces(const CatalogueApp& app, std::uint32_t from);
  void Failed();

  sqlite3* m_database;
  bool m_failed = false;  // since the current change began
  bool m_reported = false;
};
