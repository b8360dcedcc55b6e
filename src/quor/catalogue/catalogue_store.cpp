#include "quor/catalogue/catalogue_store.h"

#include <sqlite3.h>

#include <cstdio>
#include <utility>

#include "base/fail_with.h"
#include "quor/log/log.h"

namespace {

// Values of the column `submitted`: nothing, applied settings, settings for the next instance.
enum : std::int64_t { kNotSubmitted, kSubmitted, kPrepared };

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS app(id INTEGER PRIMARY KEY, name BLOB UNIQUE NOT NULL,"
    " submitted INTEGER NOT NULL DEFAULT 0, sink INTEGER NOT NULL DEFAULT 1,"
    " sink_name BLOB NOT NULL, sink_options BLOB NOT NULL);"
    "CREATE TABLE IF NOT EXISTS trace(app INTEGER NOT NULL, id INTEGER NOT NULL,"
    " component BLOB NOT NULL, category BLOB NOT NULL, settings INTEGER NOT NULL,"
    " PRIMARY KEY(app, id)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS holder(app INTEGER NOT NULL, pid INTEGER NOT NULL,"
    " PRIMARY KEY(app, pid)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS kept(app INTEGER PRIMARY KEY, settings BLOB NOT NULL);";
constexpr int kSchemaVersion = 1;

}  // namespace

class CatalogueStore::Statement {
 public:
  Statement(CatalogueStore& store, const char* sql) : m_store(store) {
    if (sqlite3_prepare_v2(store.m_database, sql, -1, &m_statement, nullptr) != SQLITE_OK)
      store.Failed();
  }
  ~Statement() { sqlite3_finalize(m_statement); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Number(std::int64_t value) {
    sqlite3_bind_int64(m_statement, ++m_bound, value);
    return *this;
  }
  Statement& Text(const std::string& value) {
    sqlite3_bind_blob64(m_statement, ++m_bound, value.data(), value.size(), SQLITE_STATIC);
    return *this;
  }
  // True while there are rows.
  bool Step() {
    const int result = m_statement ? sqlite3_step(m_statement) : SQLITE_ERROR;
    if (result != SQLITE_ROW && result != SQLITE_DONE && m_statement) m_store.Failed();
    return result == SQLITE_ROW;
  }
  void Reset() {
    sqlite3_reset(m_statement);
    m_bound = 0;
  }
  std::int64_t NumberAt(int column) const { return sqlite3_column_int64(m_statement, column); }
  std::string TextAt(int column) const {
    const void* const bytes = sqlite3_column_blob(m_statement, column);
    const int length = sqlite3_column_bytes(m_statement, column);
    return bytes ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(length))
                 : std::string();
  }

 private:
  CatalogueStore& m_store;
  sqlite3_stmt* m_statement = nullptr;
  int m_bound = 0;
};

std::unique_ptr<CatalogueStore> CatalogueStore::Open(const std::string& path, std::string* why,
                                                     bool* isTaken) {
  if (isTaken) *isTaken = false;
  for (const bool again : {false, true}) {
    sqlite3* database = nullptr;
    const int opened = sqlite3_open_v2(path.c_str(), &database,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    std::unique_ptr<CatalogueStore> store(new CatalogueStore(database));
    if (opened != SQLITE_OK) return FailWith(why, path + ": " + sqlite3_errmsg(database), nullptr);
    std::string reason;
    const State state = store->Prepare(&reason);
    if (state == State::Good) return store;
    reason.insert(0, path + ": ");
    FailWith(why, reason);
    if (isTaken) *isTaken = state == State::Taken;
    if (state != State::Damaged || again) return nullptr;
    store.reset();
    Log(LogLevel::Error, reason + "; it is put aside and a new one is begun");
    if (std::rename(path.c_str(), (path + ".damaged").c_str()) != 0) return nullptr;
    for (const char* const rest : {"-wal", "-shm"}) std::remove((path + rest).c_str());
  }
  return nullptr;
}

CatalogueStore::~CatalogueStore() {
  sqlite3_close(m_database);
}

bool CatalogueStore::Run(const char* sql) {
  return sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

CatalogueStore::State CatalogueStore::Prepare(std::string* why) {
  const std::string version = "PRAGMA user_version = " + std::to_string(kSchemaVersion) + ";";
  // NORMAL: a crash of the service loses nothing, a crash of the machine only the newest changes,
  // and after that the settings do not apply any more anyway.
  if (Run("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL;"
          "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE; COMMIT;")) {
    if (const State found = Check(why); found != State::Good) return found;
    if (Run(kSchema) && Run(version.c_str())) return State::Good;
  }
  const int code = sqlite3_errcode(m_database);
  if (code == SQLITE_BUSY) return FailWith(why, "another quord uses it", State::Taken);
  const bool damaged = code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
  return FailWith(why, sqlite3_errmsg(m_database), damaged ? State::Damaged : State::Unusable);
}

// Checks that the content is of this version and that every page is sound.
CatalogueStore::State CatalogueStore::Check(std::string* why) {
  Statement version(*this, "PRAGMA user_version");
  const std::int64_t stands = version.Step() ? version.NumberAt(0) : 0;
  if (stands != 0 && stands != kSchemaVersion)
    return FailWith(why, "it was written by another version of quord", State::Taken);
  Statement check(*this, "PRAGMA quick_check(1)");
  const std::string text = check.Step() ? check.TextAt(0) : sqlite3_errmsg(m_database);
  if (text == "ok") return State::Good;
  return FailWith(why, "it is damaged: " + text, State::Damaged);
}

void CatalogueStore::Failed() {
  m_failed = true;
  if (m_reported) return;
  m_reported = true;
  Log(LogLevel::Error, std::string("settings cannot be stored: ") + sqlite3_errmsg(m_database));
}

// Writes all or nothing. An application that is not completely in the store is inserted again.
template <class Put>
void CatalogueStore::Change(CatalogueApp& app, Put&& put) {
  m_failed = false;
  if (!Run("BEGIN")) Failed();
  if (!m_failed && app.row == 0) PutWhole(app);
  if (!m_failed) put();
  if (!m_failed && !Run("COMMIT")) Failed();
  if (m_failed) {
    app.row = 0;
    Run("ROLLBACK");
  } else if (std::exchange(m_reported, false)) {
    Log(LogLevel::Info, "settings can be stored again");
  }
}

std::vector<StoredApp> CatalogueStore::ReadAll() {
  std::vector<StoredApp> apps;
  Statement rows(*this,
                 "SELECT id, name, submitted, sink, sink_name, sink_options FROM app ORDER BY id");
  while (rows.Step()) {
    StoredApp stored;
    stored.app.row = rows.NumberAt(0);
    stored.app.name = rows.TextAt(1);
    stored.app.submitted = rows.NumberAt(2) != kNotSubmitted;
    stored.app.prepared = rows.NumberAt(2) == kPrepared;
    stored.app.sink = {rows.NumberAt(3) == 0 ? SinkKind::File : SinkKind::Socket, rows.TextAt(4),
                       rows.TextAt(5)};
    apps.push_back(std::move(stored));
  }
  for (StoredApp& stored : apps) {
    bool hasGap = false;
    Statement traces(
        *this, "SELECT id, component, category, settings FROM trace WHERE app = ? ORDER BY id");
    traces.Number(stored.app.row);
    while (traces.Step() && stored.app.traces.size() < kNoTraceId) {
      // After a gap every trace id would be wrong: the application is written again at its next
      // change.
      if (traces.NumberAt(0) != static_cast<std::int64_t>(stored.app.traces.size())) {
        hasGap = true;
        break;
      }
      stored.app.traces.push_back({traces.TextAt(1), traces.TextAt(2),
                                   static_cast<std::uint32_t>(traces.NumberAt(3)) & 0xFFFF});
    }
    Statement kept(*this, "SELECT settings FROM kept WHERE app = ?");
    kept.Number(stored.app.row);
    if (kept.Step()) stored.app.kept = SettingsText::Read(kept.TextAt(0));
    Statement holders(*this, "SELECT pid FROM holder WHERE app = ?");
    holders.Number(stored.app.row);
    while (holders.Step())
      stored.holders.push_back(static_cast<std::uint32_t>(holders.NumberAt(0)));
    if (hasGap) stored.app.row = 0;
  }
  return apps;
}

void CatalogueStore::PutWhole(CatalogueApp& app) {
  Statement(*this, "INSERT OR IGNORE INTO app(name, sink_name, sink_options) VALUES(?, ?, ?)")
      .Text(app.name)
      .Text(app.sink.name)
      .Text(app.sink.options)
      .Step();
  Statement row(*this, "SELECT id FROM app WHERE name = ?");
  row.Text(app.name);
  if (row.Step()) app.row = row.NumberAt(0);
  Statement(*this, "DELETE FROM trace WHERE app = ?").Number(app.row).Step();
  PutTraces(app, 0);
  PutSettings(app);
  PutKept(app);
}

void CatalogueStore::PutKept(const CatalogueApp& app) {
  Statement(*this, "DELETE FROM kept WHERE app = ?").Number(app.row).Step();
  const std::string text = app.kept.Written();
  if (!text.empty())
    Statement(*this, "INSERT INTO kept VALUES(?, ?)").Number(app.row).Text(text).Step();
}

void CatalogueStore::PutSettings(const CatalogueApp& app) {
  Statement(*this,
            "UPDATE app SET submitted = ?, sink = ?, sink_name = ?, sink_options = ? WHERE id = ?")
      .Number(!app.submitted ? kNotSubmitted
              : app.prepared ? kPrepared
                             : kSubmitted)
      .Number(app.sink.kind == SinkKind::File ? 0 : 1)
      .Text(app.sink.name)
      .Text(app.sink.options)
      .Number(app.row)
      .Step();
  Statement statement(*this, "UPDATE trace SET settings = ? WHERE app = ? AND id = ?");
  for (std::size_t id = 0; id < app.traces.size(); ++id) {
    statement.Number(app.traces[id].settings).Number(app.row).Number(static_cast<std::int64_t>(id));
    statement.Step();
    statement.Reset();
  }
}

void CatalogueStore::PutTraces(const CatalogueApp& app, std::uint32_t from) {
  Statement statement(*this, "INSERT OR REPLACE INTO trace VALUES(?, ?, ?, ?, ?)");
  for (std::uint32_t id = from; id < app.traces.size() && !m_failed; ++id) {
    const CatalogueTrace& trace = app.traces[id];
    statement.Number(app.row).Number(id).Text(trace.component).Text(trace.category);
    statement.Number(trace.settings).Step();
    statement.Reset();
  }
}

void CatalogueStore::WriteApp(CatalogueApp& app) {
  Change(app, [] {});
}

void CatalogueStore::EraseApp(CatalogueApp& app) {
  Change(app, [this, &app] {
    for (const char* const sql :
         {"DELETE FROM kept WHERE app = ?", "DELETE FROM holder WHERE app = ?",
          "DELETE FROM trace WHERE app = ?", "DELETE FROM app WHERE id = ?"})
      Statement(*this, sql).Number(app.row).Step();
  });
}

void CatalogueStore::WriteTraces(CatalogueApp& app, std::uint32_t from) {
  Change(app, [this, &app, from] { PutTraces(app, from); });
}

void CatalogueStore::WriteSettings(CatalogueApp& app) {
  Change(app, [this, &app] { PutSettings(app); });
}

void CatalogueStore::WriteKept(CatalogueApp& app) {
  Change(app, [this, &app] { PutKept(app); });
}

void CatalogueStore::WriteHolders(CatalogueApp& app, const std::set<std::uint32_t>& pids) {
  Change(app, [this, &app, &pids] {
    Statement(*this, "DELETE FROM holder WHERE app = ?").Number(app.row).Step();
    for (const std::uint32_t pid : pids)
      Statement(*this, "INSERT INTO holder VALUES(?, ?)").Number(app.row).Number(pid).Step();
  });
}
