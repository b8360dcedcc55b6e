// The catalogue on disk: one SQLite database in the state folder, in WAL mode.
//
// Owner    Holds the database, and it alone: a second service on the same state is refused.
// Errors   Open gives null and a reason. A database that is damaged is put aside under the name
//          *.damaged and a new one begun, told in the log. A write that fails is told in the log
//          once.
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
  static std::unique_ptr<CatalogueStore> Open(const std::string& path, std::string* why);
  ~CatalogueStore();
  CatalogueStore(const CatalogueStore&) = delete;
  CatalogueStore& operator=(const CatalogueStore&) = delete;

  std::vector<StoredApp> ReadAll();
  void WriteApp(CatalogueApp& app);  // gives it its row
  void EraseApp(const CatalogueApp& app);
  void WriteTrace(const CatalogueApp& app, std::uint32_t id);
  void WriteSettings(const CatalogueApp& app);  // the sink, and the words of all traces
  void WriteHolders(const CatalogueApp& app, const std::set<std::uint32_t>& pids);

 private:
  class Statement;
  explicit CatalogueStore(sqlite3* database) : m_database(database) {}
  bool Prepare(std::string* why, bool* damaged);
  bool Run(const char* sql);
  void Begin();
  void Commit();
  void Failed();

  sqlite3* m_database;
  bool m_told = false;
};
