#pragma once

/// @file PreferenceDatabase.h
/// A database file of keys and values.

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// A new value and its serialised bytes. Both are null if the entry is removed.
struct PreferenceChange {
  Ref<Object> value;
  Ref<Data> bytes;
};
using PreferenceChanges = std::map<std::string, PreferenceChange, std::less<>>;

/// A table of byte strings in a database with a write-ahead log: a change is saved completely or
/// not at all, even if its writer is killed. Its files are readable by their owner only. Triggers
/// and views in the file have no effect.
///
/// A database may be a symbolic link. Its target is found when it is opened, and the log is beside
/// the target. Not opened are links that neither this user nor the superuser owns, pipes, and
/// devices.
///
/// Threads: one at a time.
class PreferenceDatabase {
 public:
  enum class Result {
    done,
    damaged,  ///< the file is not a valid database
    full,     ///< the change does not fit: full disk, quota, limit of a file, value too large
    failed,   ///< no permission, locked by another process, out of memory, not a regular file
  };

  PreferenceDatabase();
  ~PreferenceDatabase();

  /// Opens or reopens an existing database. One that cannot be written can still be read, with its
  /// write-ahead log; write() then fails. A missing table counts as damage.
  [[nodiscard]] Result openToRead(const std::string& name);
  /// Opens or reopens the database. Creates the file and its table if they do not exist.
  [[nodiscard]] Result openToWrite(const std::string& name);
  void close() noexcept;
  /// Closes the database without writing the log into it.
  void closeUnchanged() noexcept;
  [[nodiscard]] bool isOpen() const noexcept;
  /// Returns false for a database that openToRead() could open for reading only.
  [[nodiscard]] bool isWritable() const noexcept;

  /// Returns the absolute path with all symbolic links followed, also if there is no such file.
  [[nodiscard]] static std::string targetOf(const std::string& path);
  /// The target of the name that was opened last.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// What has happened to the files of the open database.
  enum class Files {
    inPlace,
    cut,    ///< the database or its log was truncated, or its log removed or replaced
    moved,  ///< the database was removed or replaced, or a link has another target
  };
  [[nodiscard]] Files files() const noexcept;
  /// Returns false if the write-ahead log was removed, replaced or truncated. Faster than files().
  [[nodiscard]] bool isLogWhole() const noexcept;
  /// Returns false if the database must be closed before the next transaction: it was read without
  /// locks, or its log's index was truncated, which it maps, so that a transaction would stop the
  /// process.
  [[nodiscard]] bool isUsable() const noexcept;

  /// Returns whether others have changed the database since the last read(), or there was none.
  [[nodiscard]] bool hasChanged() noexcept;

  [[nodiscard]] Result read(
      const std::function<void(std::string_view key, std::span<const std::byte> value)>& each);

  /// Saves all changes or none.
  [[nodiscard]] Result write(const PreferenceChanges& changes);

  /// Lets the next write reuse the log from its start, and shorten it to 1 MiB.
  void releaseSpace() noexcept;

  /// The text of the last error.
  [[nodiscard]] const std::string& fault() const noexcept { return fault_; }

 private:
  struct Connection;

  [[nodiscard]] bool find(const std::string& name);
  [[nodiscard]] Result resultOf(int code);
  [[nodiscard]] bool isLogIndexWhole() const noexcept;

  std::unique_ptr<Connection> connection_;
  std::string name_;
  std::string path_;
  std::string fault_;
};

}  // namespace tq::detail
