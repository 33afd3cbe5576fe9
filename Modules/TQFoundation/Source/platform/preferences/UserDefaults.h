#pragma once

/// @file UserDefaults.h
/// User preferences: a persistent store of values by key.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/preferences/PreferenceObservation.h>

namespace tq {

namespace detail {
class PreferenceStore;
}

/// A store of preferences. A key is searched in these places, and the first value found is used:
///
/// 1. the arguments of this run (setArguments()), never saved;
/// 2. the store's own domain, to which all changes are written;
/// 3. the domain "global" of the same folder, shared by all applications;
/// 4. the defaults registered in this process, never saved.
///
/// After an entry is removed, its registered default is visible again.
///
/// Each domain is a database in the user's configuration folder: $XDG_CONFIG_HOME/korvan, or
/// .config/korvan in $HOME or, if that is no absolute path, in the home folder of the system's user
/// database. If there is none either, nothing can be saved. A change is visible immediately to all
/// threads of the process and to the next read of every other process, and survives a crash of the
/// process. A change that cannot be saved is kept in memory, saved with the next change if
/// possible, and reported to the log. If a value does not fit on the disk or within a quota,
/// smaller ones are still saved. A damaged or truncated database is renamed, never overwritten; the
/// values that can be read or are known are saved in a new one. A database can be a symbolic link
/// of this user or the superuser: its target is used and renamed. Pipes and devices are not opened.
///
/// A database that cannot be written (read-only, owned by another user, or on a full disk) can
/// still be read completely. New files are readable by their owner only, in a folder of mode 0700;
/// an existing folder keeps its mode. If other users may write in it, or it belongs to another
/// user, each read asks the database, which takes about as long as SQLite's own check.
/// Processes in another IPC namespace (containers), or that reach the database through another
/// folder's symbolic link, see changes at their next change or synchronize() that comes a second or
/// more after the last one.
///
/// Values are property lists: String, Number, Date, Data, and Array and Dictionary (with string
/// keys) of these, up to 512 levels deep and about 256 MiB, including 64 bytes for each value. They
/// are returned equal and immutable; booleans, integers and doubles keep their kind. A key is any
/// text.
///
/// Threads: any. Stores of one domain share their entries. A forked child must not use stores that
///          its parent has used.
/// Cost:    a read takes a few loads and a look-up, without a lock. The first read after a change
///          takes the store's lock and copies the table of pointers. A write takes as long as a
///          commit of the database. If a process stops while it writes, each write of the others
///          waits for 2 s and is then kept in memory.
class TQ_EXPORT UserDefaults final : public Subclass<UserDefaults> {
 public:
  static constexpr std::string_view className = "UserDefaults";
  ~UserDefaults() override;

  /// Returns the application's store, created on first use.
  [[nodiscard]] static Ref<UserDefaults> standardUserDefaults();
  /// Sets the domain of the standard store, which is the program's name by default. Must be called
  /// at start-up: it has no effect after the standard store was used.
  /// @return false for a name that initWithSuiteName() does not accept
  static bool setApplicationDomain(std::string_view name);

  /// Returns the store of another domain. Null if the name is empty, is longer than 200 bytes,
  /// contains "/" or NUL, starts with ".", or is "global".
  [[nodiscard]] static Ref<UserDefaults> initWithSuiteName(std::string_view name);
  /// The same in another folder, which is created if it does not exist. A relative path starts at
  /// the current folder at this call. With an empty one, nothing can be saved.
  [[nodiscard]] static Ref<UserDefaults> initWithSuiteName(std::string_view name,
                                                           std::string_view inFolder);

  /// Adds entries to the arguments of this run. @throws as setObject()
  static void setArguments(const Dictionary& arguments);

  /// Returns the value, or null.
  [[nodiscard]] Ref<Object> objectForKey(std::string_view key) const;
  /// The same without retaining it. Valid until this thread's next call on any store.
  [[nodiscard]] const Object* peekObjectForKey(std::string_view key) const;

  /// Return the value, converted leniently:
  ///
  /// | read    | absent | boolean  | number          | string                  | other |
  /// |---------|--------|----------|-----------------|-------------------------|-------|
  /// | bool    | false  | itself   | whether not 0   | its boolean reading     | false |
  /// | integer | 0      | 1 / 0    | truncated       | its integer reading     | 0     |
  /// | double  | 0      | 1 / 0    | its value       | its double reading      | 0     |
  /// | string  | null   | "1", "0" | its text        | itself                  | null  |
  [[nodiscard]] bool boolForKey(std::string_view key) const;
  [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;
  [[nodiscard]] double doubleForKey(std::string_view key) const;
  [[nodiscard]] Ref<String> stringForKey(std::string_view key) const;

  /// The same conversions for a given value; null means absent.
  [[nodiscard]] static bool boolReading(const Object* object) noexcept;
  [[nodiscard]] static std::int64_t integerReading(const Object* object) noexcept;

  /// Stores the value. Null removes the entry.
  /// @throws Exception (InvalidArgumentException) if the value is not a property list or the key is
  ///         not text; the store is unchanged
  void setObject(const Object* object, std::string_view forKey);
  template <class T>
  void setObject(const Ref<T>& object, std::string_view forKey) {
    setObject(object.get(), forKey);
  }
  void setBool(bool value, std::string_view forKey);
  void setInteger(std::int64_t value, std::string_view forKey);
  void setDouble(double value, std::string_view forKey);
  /// Removes the entry, if it exists.
  void removeObjectForKey(std::string_view key);

  /// Adds entries to the registered defaults, which all stores of the process share. A later value
  /// replaces an earlier one. @throws as setObject()
  void registerDefaults(const Dictionary& defaults);
  /// The same for one entry. @throws as setObject()
  void registerDefault(const Object& value, std::string_view forKey);

  /// Returns all entries that this store can read, from all four places.
  [[nodiscard]] Ref<Dictionary> dictionaryRepresentation() const;

  /// Saves the changes that could not be saved before. If the files were removed, saves the changes
  /// from after the last check for them; the older entries are lost.
  /// @return false, with an error that gives the reason, if they cannot be saved
  bool synchronize(Ref<Error>* error = nullptr);

  /// Calls the handler after entries of this store have changed, as objectForKey() returns them, on
  /// the run loop of the calling thread. See PreferenceObservation for what is reported, and when.
  /// @return the observation, which ends when it is released. It retains this store.
  [[nodiscard]] Ref<PreferenceObservation> observeChanges(PreferenceObservation::Handler handler);

 private:
  friend class PreferenceObservation;
  using Store = std::shared_ptr<detail::PreferenceStore>;
  enum Level : std::size_t { kArguments, kOwn, kGlobal, kRegistered, kLevels };

  UserDefaults(std::string_view folder, std::string_view name);
  [[nodiscard]] bool noticeChanges();
  static void setAll(detail::PreferenceStore& store, const Dictionary& entries);

  const std::array<Store, kLevels> levels_;
};

}  // namespace tq
