#include <TQFoundation/platform/preferences/detail/PreferenceDatabase.h>

#include <sqlite3.h>

#include <utility>

namespace tq::detail {
namespace {

constexpr int kBusyMilliseconds = 2000;

struct Finalizer {
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

struct Closer {
  void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
};

// The pointer is never null: SQLite would bind NULL instead of an empty value.
int bindBytes(sqlite3_stmt* statement, int index, std::string_view bytes) {
  return sqlite3_bind_blob64(statement, index, bytes.empty() ? "" : bytes.data(), bytes.size(),
                             SQLITE_STATIC);
}

std::string_view column(sqlite3_stmt* statement, int index) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, index));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, index))};
}

}  // namespace

// Keys are stored as blobs, because the database's texts end at a NUL.
struct PreferenceDatabase::Connection {
  std::unique_ptr<sqlite3, Closer> database;  // first, so that statements are destroyed before it
  Statement select;
  Statement store;
  Statement remove;

  int execute(const char* statements) {
    return sqlite3_exec(database.get(), statements, nullptr, nullptr, nullptr);
  }

  int prepare(Statement& statement, std::string_view text) {
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v3(database.get(), text.data(), static_cast<int>(text.size()),
                                        SQLITE_PREPARE_PERSISTENT, &made, nullptr);
    statement.reset(made);
    return code;
  }

  int open(const std::string& path, bool mayCreate) {
    sqlite3* made = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    int code = sqlite3_open_v2(path.c_str(), &made, mayCreate ? flags | SQLITE_OPEN_CREATE : flags,
                               nullptr);
    database.reset(made);
    if (code != SQLITE_OK) return code;
    sqlite3_busy_timeout(made, kBusyMilliseconds);
    code = execute("PRAGMA synchronous = NORMAL");
    if (code == SQLITE_OK && mayCreate) {
      code = execute(
          "PRAGMA journal_mode = WAL;"
          "CREATE TABLE IF NOT EXISTS preference (key BLOB PRIMARY KEY, value BLOB NOT NULL)"
          " WITHOUT ROWID");
    }
    if (code != SQLITE_OK) return code;
    code = prepare(select, "SELECT key, value FROM preference");
    if (code == SQLITE_OK) {
      code = prepare(store,
                     "INSERT INTO preference VALUES (?1, ?2)"
                     " ON CONFLICT (key) DO UPDATE SET value = excluded.value");
    }
    return code == SQLITE_OK ? prepare(remove, "DELETE FROM preference WHERE key = ?1") : code;
  }

  int writeOne(const std::string& key, const Ref<Data>& value) {
    sqlite3_stmt* const statement = value != nullptr ? store.get() : remove.get();
    int code = bindBytes(statement, 1, key);
    if (code == SQLITE_OK && value != nullptr) code = bindBytes(statement, 2, value->view());
    if (code == SQLITE_OK) code = sqlite3_step(statement);
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return code == SQLITE_DONE ? SQLITE_OK : code;
  }
};

PreferenceDatabase::PreferenceDatabase() = default;
PreferenceDatabase::~PreferenceDatabase() = default;

bool PreferenceDatabase::isOpen() const noexcept { return connection_ != nullptr; }
void PreferenceDatabase::close() noexcept { connection_.reset(); }

// A table with other columns makes our statements fail, which also counts as damage.
PreferenceDatabase::Result PreferenceDatabase::resultOf(int code) {
  if (code == SQLITE_OK) return Result::done;
  sqlite3* const database = connection_->database.get();
  fault_ = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(code);
  const int kind = code & 0xFF;
  const bool isDamaged = kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_ERROR;
  if (isDamaged && database != nullptr) {
    // A damaged file is set aside unchanged: its log is not written into it.
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  }
  return isDamaged ? Result::damaged : Result::failed;
}

bool PreferenceDatabase::isInPlace() const noexcept {
  int hasMoved = 0;
  sqlite3_file_control(connection_->database.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  return hasMoved == 0;
}

PreferenceDatabase::Result PreferenceDatabase::open(const std::string& path, bool mayCreate) {
  connection_ = std::make_unique<Connection>();
  const Result result = resultOf(connection_->open(path, mayCreate));
  if (result != Result::done) close();
  return result;
}

PreferenceDatabase::Result PreferenceDatabase::read(
    const std::function<void(std::string_view, std::span<const std::byte>)>& each) {
  sqlite3_stmt* const select = connection_->select.get();
  int code;
  try {
    while ((code = sqlite3_step(select)) == SQLITE_ROW) {
      each(column(select, 0), std::as_bytes(std::span(column(select, 1))));
    }
  } catch (...) {
    sqlite3_reset(select);
    throw;
  }
  sqlite3_reset(select);
  return resultOf(code == SQLITE_DONE ? SQLITE_OK : code);
}

PreferenceDatabase::Result PreferenceDatabase::write(const PreferenceChanges& changes) {
  if (changes.size() == 1) {  // a single statement is a transaction
    return resultOf(connection_->writeOne(changes.begin()->first, changes.begin()->second.bytes));
  }
  int code = connection_->execute("BEGIN IMMEDIATE");
  for (auto change = changes.begin(); code == SQLITE_OK && change != changes.end(); ++change) {
    code = connection_->writeOne(change->first, change->second.bytes);
  }
  if (code == SQLITE_OK) code = connection_->execute("COMMIT");
  const Result result = resultOf(code);
  if (result != Result::done) connection_->execute("ROLLBACK");
  return result;
}

}  // namespace tq::detail
