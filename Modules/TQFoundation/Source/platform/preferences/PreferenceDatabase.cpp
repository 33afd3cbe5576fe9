#include <TQFoundation/platform/preferences/detail/PreferenceDatabase.h>

#include <errno.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
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

/// Prevents the log from being written into the database when it is closed.
void keepLog(sqlite3* database) {
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
constexpr off_t kHeaderSize = 32;
constexpr off_t kLogIndexSize = 32768;  // of its first part, which is always mapped

/// The URI of a file.
std::string uriOf(const std::string& path) {
  std::string uri = "file:";
  for (const char c : path) {
    const char* const escaped = c == '%' ? "%25" : c == '?' ? "%3f" : c == '#' ? "%23" : nullptr;
    escaped != nullptr ? uri.append(escaped) : uri.append(1, c);
  }
  return uri;
}

constexpr int kLongestPath = 1024;  // SQLite opens none longer than 512
using PathBuffer = std::array<char, kLongestPath>;

/// Returns what SQLite opens for a path, as targetOf(), or null on failure.
const char* follow(const std::string& path, PathBuffer& target) noexcept {
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  if (system == nullptr) return nullptr;
  const int code = system->xFullPathname(system, path.c_str(), kLongestPath, target.data());
  return (code & 0xFF) == SQLITE_OK ? target.data() : nullptr;
}

/// Returns why a database must not be opened, or an empty text. A transaction would wait for the
/// other end of a pipe. A link of another user could name any file of this one, which would be
/// renamed as a damaged database.
std::string obstacleIn(const std::string& name, const std::string& path) {
  struct stat status {};
  if (::lstat(name.c_str(), &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid != 0 &&
      status.st_uid != ::geteuid()) {
    return "it is a symbolic link of another user";
  }
  for (const char* const suffix : {"", "-journal", "-wal", "-shm"}) {
    const std::string file = path + suffix;
    if (::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
      return file + " is not a regular file";
    }
  }
  return {};
}

/// Returns the system's error number of the last write that failed, in the log or the database.
/// SQLite itself keeps none of a failed commit.
int writeErrorOf(sqlite3* database) {
  int number = 0;
  sqlite3_file* log = nullptr;
  sqlite3_file_control(database, nullptr, SQLITE_FCNTL_JOURNAL_POINTER, static_cast<void*>(&log));
  if (log != nullptr && log->pMethods != nullptr) {
    log->pMethods->xFileControl(log, SQLITE_FCNTL_LAST_ERRNO, &number);
  }
  if (number == 0) sqlite3_file_control(database, nullptr, SQLITE_FCNTL_LAST_ERRNO, &number);
  return number;
}

/// The fields that change with each change of a file by another program.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = -1;  ///< -1: there is no file
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  static FileStamp of(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
  }
  bool operator==(const FileStamp&) const = default;
};
using FileStamps = std::array<FileStamp, 2>;

FileStamps stampsOf(const std::string& path) {
  return {FileStamp::of(path), FileStamp::of(path + "-wal")};
}

/// A handle that only asks for the status of a file. Closing it keeps the process's locks on the
/// file, unlike closing any other descriptor of it.
class Watched {
 public:
  explicit Watched(const std::string& path)
      : descriptor_(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC)) {
    noteHeader();
  }
  ~Watched() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  /// Returns false if the file was removed, replaced, or is shorter than `least`.
  [[nodiscard]] bool isAtLeast(off_t least) const noexcept {
    struct stat status {};
    return descriptor_ < 0 ||
           (::fstat(descriptor_, &status) == 0 && status.st_nlink != 0 && status.st_size >= least);
  }
  /// Must be called after each transaction: a new file is empty before the first one.
  void noteHeader() noexcept { hadHeader_ = hadHeader_ || isAtLeast(kHeaderSize); }
  /// Returns false if the file was removed, replaced or truncated. The database itself never
  /// removes a header.
  [[nodiscard]] bool isWhole() const noexcept { return isAtLeast(hadHeader_ ? kHeaderSize : 0); }

 private:
  int descriptor_;
  bool hadHeader_ = false;
};

/// Creates the file, or removes the permissions of others if it belongs to this user. An existing
/// file is not opened: closing it would release locks.
void keepToOwner(const std::string& path) {
  const int made = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
  if (made >= 0) {
    struct stat folder {};
    const std::string name = path.substr(0, path.rfind('/') + 1);
    const bool isForUser = ::geteuid() == 0 && ::stat(name.c_str(), &folder) == 0;
    // The superuser may run this with a user's home. The log gets the owner of the database.
    if (isForUser) static_cast<void>(!::fchown(made, folder.st_uid, folder.st_gid));
    ::fchmod(made, kOwnerOnly);  // the process's mask has no effect
    ::close(made);
    return;
  }
  for (const char* const suffix : {"", "-wal", "-shm"}) {
    struct stat status {};
    const std::string file = path + suffix;
    if (::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & kOthers) != 0) {
      ::chmod(file.c_str(), status.st_mode & S_IRWXU);
    }
  }
}

}  // namespace

// Keys are stored as blobs, because the database's texts end at a NUL.
struct PreferenceDatabase::Connection {
  explicit Connection(std::string of) : path(std::move(of)) {}

  const std::string path;
  std::unique_ptr<sqlite3, Closer> database;  // first, so that statements are destroyed before it
  Statement select;
  Statement version;
  Statement store;
  Statement remove;
  std::unique_ptr<Watched> file;
  std::unique_ptr<Watched> log;
  std::unique_ptr<Watched> logIndex;
  bool takesLocks = true;
  bool isWritable = false;
  std::int64_t versionRead = -1;  ///< the data version of the last read; -1: none
  FileStamps stampsRead;          ///< the same, if no locks are taken

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

  int connect(const std::string& name, int flags, const char* system) {
    sqlite3* made = nullptr;
    const int code =
        sqlite3_open_v2(name.c_str(), &made, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI, system);
    database.reset(made);
    if (code != SQLITE_OK) return code;
    sqlite3_busy_timeout(made, kBusyMilliseconds);
    // The file is not trusted: it may contain any statements.
    sqlite3_db_config(made, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    if (!takesLocks) return execute("PRAGMA locking_mode = EXCLUSIVE");  // before anything is read
    // The log keeps the size at which it is written into the database: a write over its blocks
    // costs less than one that makes it longer.
    return execute(
        "PRAGMA synchronous = NORMAL; PRAGMA mmap_size = 0; PRAGMA journal_size_limit = 4194304");
  }

  int prepareToRead() {
    int code = prepare(select, "SELECT key, value FROM preference");
    if (code == SQLITE_OK) code = prepare(version, "PRAGMA data_version");
    std::int64_t ignored = 0;
    return code == SQLITE_OK ? dataVersion(ignored) : code;  // opens the log
  }

  int prepareToWrite() {
    const int code = prepare(store,
                             "INSERT INTO preference VALUES (?1, ?2)"
                             " ON CONFLICT (key) DO UPDATE SET value = excluded.value");
    // Other programs may have stored texts and numbers as keys, which read() returns as bytes.
    // Numbers are less than all texts.
    return code == SQLITE_OK ? prepare(remove,
                                       "DELETE FROM preference WHERE key IN (?1, CAST(?1 AS TEXT))"
                                       " OR (key < '' AND CAST(key AS BLOB) = ?1)")
                             : code;
  }

  void watch() {
    file = std::make_unique<Watched>(path);
    log = std::make_unique<Watched>(path + "-wal");
    logIndex = std::make_unique<Watched>(path + "-shm");
  }

  int openToWrite() {
    keepToOwner(path);
    int code = connect(uriOf(path), SQLITE_OPEN_READWRITE, nullptr);
    if (code == SQLITE_OK) {
      code = execute(
          "PRAGMA journal_mode = WAL;"
          "CREATE TABLE IF NOT EXISTS preference (key BLOB PRIMARY KEY, value BLOB NOT NULL)"
          " WITHOUT ROWID");
    }
    if (code == SQLITE_OK) code = prepareToRead();
    if (code == SQLITE_OK) code = prepareToWrite();
    if (code != SQLITE_OK) return code;
    isWritable = true;
    watch();
    return code;
  }

  int openToRead() {
    int code = connect(uriOf(path), SQLITE_OPEN_READWRITE, nullptr);
    if (code == SQLITE_OK) code = prepareToRead();
    if (code == SQLITE_OK) {
      isWritable =
          sqlite3_db_readonly(database.get(), nullptr) == 0 && prepareToWrite() == SQLITE_OK;
      watch();
    }
    return code;
  }

  // The index of the write-ahead log cannot be created or locked. Then no other process uses the
  // database, unless it has failed in the same way, and the files are read without locks, with the
  // index in memory. A process that writes meanwhile changes a stamp, and the read is repeated.
  int openWithoutLocks() {
    takesLocks = false;
    stampsRead = stampsOf(path);
    const bool usesLog = stampsRead[1].size > 0;
    const int code = connect(uriOf(path) + (usesLog ? "" : "?immutable=1"), SQLITE_OPEN_READONLY,
                             usesLog ? "unix-none" : nullptr);
    if (code != SQLITE_OK) return code;
    keepLog(database.get());
    return prepareToRead();
  }

  /// Called after a transaction.
  void noteHeaders() noexcept {
    for (const auto& each : {file.get(), log.get()}) {
      if (each != nullptr) each->noteHeader();
    }
  }

  int dataVersion(std::int64_t& number) {
    int code = sqlite3_step(version.get());
    if (code == SQLITE_ROW) {
      number = sqlite3_column_int64(version.get(), 0);
      code = SQLITE_OK;
    }
    sqlite3_reset(version.get());
    return code;
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
PreferenceDatabase::~PreferenceDatabase() { close(); }

bool PreferenceDatabase::isOpen() const noexcept { return connection_ != nullptr; }
bool PreferenceDatabase::isWritable() const noexcept { return connection_->isWritable; }

void PreferenceDatabase::close() noexcept {
  if (isOpen() && !isLogIndexWhole()) return closeUnchanged();
  connection_.reset();
}

void PreferenceDatabase::closeUnchanged() noexcept {
  if (isOpen()) keepLog(connection_->database.get());
  connection_.reset();
}

// A table with other columns or conditions makes our statements fail, which also counts as damage.
// So does a file that is writable, but is marked as not writable in its header.
PreferenceDatabase::Result PreferenceDatabase::resultOf(int code) {
  if (code == SQLITE_OK) return Result::done;
  sqlite3* const database = connection_->database.get();  // null if there was no memory for it
  fault_ = sqlite3_errmsg(database);
  const int extended = sqlite3_extended_errcode(database);
  switch (code & 0xFF) {
    case SQLITE_FULL:
    case SQLITE_TOOBIG:
      return Result::full;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
      break;
    case SQLITE_IOERR:
      if (extended == SQLITE_IOERR_WRITE) {  // which is also that of quotas and limits
        const int number = writeErrorOf(database);
        if (number != EFBIG && number != EDQUOT) return Result::failed;
        fault_ = ::strerrordesc_np(number);
        return Result::full;
      }
      if (extended != SQLITE_IOERR_SHORT_READ) return Result::failed;
      break;
    case SQLITE_READONLY:
      if (extended != SQLITE_READONLY || !connection_->takesLocks ||
          ::euidaccess(connection_->path.c_str(), W_OK) != 0) {
        return Result::failed;
      }
      break;
    default:
      return Result::failed;
  }
  keepLog(database);  // a damaged file is set aside unchanged
  return Result::damaged;
}

PreferenceDatabase::Files PreferenceDatabase::files() const noexcept {
  const Connection& connection = *connection_;
  PathBuffer target;
  const char* const now = follow(name_, target);
  if (now != nullptr && now != connection.path) return Files::moved;
  if (!connection.takesLocks) return Files::inPlace;
  int hasMoved = 0;
  sqlite3_file_control(connection.database.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  if (hasMoved != 0) return Files::moved;
  return isLogWhole() && connection.file->isWhole() ? Files::inPlace : Files::cut;
}

bool PreferenceDatabase::isLogWhole() const noexcept {
  return connection_->log == nullptr || connection_->log->isWhole();
}

bool PreferenceDatabase::isUsable() const noexcept {
  return connection_->takesLocks && isLogIndexWhole();
}

bool PreferenceDatabase::isLogIndexWhole() const noexcept {
  return connection_->logIndex == nullptr || connection_->logIndex->isAtLeast(kLogIndexSize);
}

bool PreferenceDatabase::hasChanged() noexcept {
  if (!isOpen()) return true;
  Connection& connection = *connection_;
  if (!connection.takesLocks) return connection.stampsRead != stampsOf(connection.path);
  std::int64_t now = 0;
  return !isLogIndexWhole() || connection.dataVersion(now) != SQLITE_OK ||
         now != connection.versionRead;
}

std::string PreferenceDatabase::targetOf(const std::string& path) {
  PathBuffer target;
  const char* const followed = follow(path, target);
  return followed != nullptr ? followed : path;
}

/// Sets the path. @return false, with the fault, if the files must not be opened
bool PreferenceDatabase::find(const std::string& name) {
  close();
  name_ = name;
  path_ = targetOf(name_);
  fault_ = obstacleIn(name_, path_);
  return fault_.empty();
}

PreferenceDatabase::Result PreferenceDatabase::openToWrite(const std::string& name) {
  if (!find(name)) return Result::failed;
  connection_ = std::make_unique<Connection>(path_);
  const Result result = resultOf(connection_->openToWrite());
  if (result != Result::done) close();
  return result;
}

PreferenceDatabase::Result PreferenceDatabase::openToRead(const std::string& name) {
  if (!find(name)) return Result::failed;
  connection_ = std::make_unique<Connection>(path_);
  Result result = resultOf(connection_->openToRead());
  if (result == Result::failed || result == Result::full) {
    const std::string fault = fault_;
    connection_ = std::make_unique<Connection>(path_);
    if (resultOf(connection_->openWithoutLocks()) == Result::done) return Result::done;
    fault_ = fault;
  }
  if (result != Result::done) close();
  return result;
}

PreferenceDatabase::Result PreferenceDatabase::read(
    const std::function<void(std::string_view, std::span<const std::byte>)>& each) {
  sqlite3_stmt* const select = connection_->select.get();
  // Before the entries: a change in between is found by the next hasChanged().
  int code = connection_->dataVersion(connection_->versionRead);
  if (code != SQLITE_OK) return resultOf(code);
  try {
    while ((code = sqlite3_step(select)) == SQLITE_ROW) {
      each(column(select, 0), std::as_bytes(std::span(column(select, 1))));
    }
  } catch (...) {
    sqlite3_reset(select);
    throw;
  }
  sqlite3_reset(select);
  if (!connection_->takesLocks && connection_->stampsRead != stampsOf(connection_->path)) {
    connection_->versionRead = -1;
    fault_ = "the file was changed while it was read";
    return Result::failed;
  }
  connection_->noteHeaders();
  return resultOf(code == SQLITE_DONE ? SQLITE_OK : code);
}

PreferenceDatabase::Result PreferenceDatabase::write(const PreferenceChanges& changes) {
  const bool isOne = changes.size() == 1;  // a single statement is a transaction
  int code = isOne ? SQLITE_OK : connection_->execute("BEGIN IMMEDIATE");
  for (auto change = changes.begin(); code == SQLITE_OK && change != changes.end(); ++change) {
    code = connection_->writeOne(change->first, change->second.bytes);
  }
  if (code == SQLITE_OK && !isOne) code = connection_->execute("COMMIT");
  connection_->noteHeaders();
  const Result result = resultOf(code);
  if (result != Result::done && !isOne) connection_->execute("ROLLBACK");
  return result;
}

void PreferenceDatabase::releaseSpace() noexcept {
  connection_->execute("PRAGMA journal_size_limit = 1048576; PRAGMA wal_checkpoint(RESTART)");
}

}  // namespace tq::detail
