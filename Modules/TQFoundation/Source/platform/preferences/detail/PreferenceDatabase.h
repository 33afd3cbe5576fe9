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
/// not at all, however its writer ends.
///
/// Threads: one at a time.
class PreferenceDatabase {
 public:
  enum class Result {
    done,
    damaged,  ///< the file is not a valid database
    failed,   ///< full disk, no permission, locked by another process
  };

  PreferenceDatabase();
  ~PreferenceDatabase();

  /// Opens or reopens the database. With `mayCreate`, creates the file and its table if they do not
  /// exist. Without it, a missing file cannot be opened, and a missing table counts as damage.
  [[nodiscard]] Result open(const std::string& path, bool mayCreate);
  void close() noexcept;
  [[nodiscard]] bool isOpen() const noexcept;
  /// Returns false if the file of the open database was removed or replaced.
  [[nodiscard]] bool isInPlace() const noexcept;

  [[nodiscard]] Result read(
      const std::function<void(std::string_view key, std::span<const std::byte> value)>& each);

  /// Saves all changes or none.
  [[nodiscard]] Result write(const PreferenceChanges& changes);

  /// The text of the last error.
  [[nodiscard]] const std::string& fault() const noexcept { return fault_; }

 private:
  struct Connection;

  [[nodiscard]] Result resultOf(int code);

  std::unique_ptr<Connection> connection_;
  std::string fault_;
};

}  // namespace tq::detail
