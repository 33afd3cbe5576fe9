#pragma once

/// @file PreferenceDatabase.h
/// Keys and values on disk.

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Data.h>

namespace tq::detail {

/// A new value and the bytes that stand for it; neither when the entry is to go.
struct PreferenceChange {
  Ref<Object> value;
  Ref<Data> bytes;
};
using PreferenceChanges = std::map<std::string, PreferenceChange, std::less<>>;

/// A table of byte strings in a database with a write-ahead log: a change is there whole or not at
/// all, however its writer ends. Threads: one at a time.
class PreferenceDatabase {
 public:
  enum class Result {
    done,
    damaged,  ///< the file is not such a database, or no longer
    failed,   ///< a full disk, no permission, another's lock
  };

  PreferenceDatabase();
  ~PreferenceDatabase();

  /// Opens the database, or opens it anew. One that is not there, or has no table yet, is made when
  /// that is allowed; else the first cannot be opened, and the second counts as damaged.
  [[nodiscard]] Result open(const std::string& path, bool mayCreate);
  void close() noexcept;
  [[nodiscard]] bool isOpen() const noexcept;
  /// False when the file of the open database was removed, or another one put in its place.
  [[nodiscard]] bool isInPlace() const noexcept;

  [[nodiscard]] Result read(
      const std::function<void(std::string_view key, std::span<const std::byte> value)>& each);

  /// All of these or none.
  [[nodiscard]] Result write(const PreferenceChanges& changes);

  /// What went wrong last, for people.
  [[nodiscard]] const std::string& fault() const noexcept { return fault_; }

 private:
  struct Connection;

  [[nodiscard]] Result resultOf(int code);

  std::unique_ptr<Connection> connection_;
  std::string fault_;
};

}  // namespace tq::detail
