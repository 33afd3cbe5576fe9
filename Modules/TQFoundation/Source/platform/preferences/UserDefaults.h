#pragma once

/// @file UserDefaults.h
/// The user's preferences: values by key, kept from one run to the next.

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

namespace tq {

namespace detail {
class PreferenceStore;
}

/// A store of preferences. A key is looked for in
///
/// 1. the arguments of this run (setArguments()), never saved,
/// 2. the store's own domain, where all writing goes,
/// 3. the domain "global" of the same folder, shared by all applications,
/// 4. the defaults registered in this process, never saved;
///
/// the first hit wins. So a removed entry lets its registered default show again.
///
/// Each domain is a database in the user's configuration folder ($XDG_CONFIG_HOME/korvan, else
/// ~/.config/korvan). A change is seen at once by every reader in the process and by the next read
/// of every other process, and is there after a crash of the process. What cannot be saved is kept
/// in memory for this process, tried again with the next change, and told to the log; a damaged
/// database is set aside under another name, never overwritten.
///
/// Values are property lists: String, Number, Date, Data, and Array and Dictionary (with string
/// keys) of these, up to 512 deep and about 256 MiB, 64 bytes for each value included. They come
/// back equal and immutable: a boolean as a boolean, an integer as an integer, a double as a
/// double. Keys are any text.
///
/// Threads: any; stores of one domain share one set of entries. Not for use in a forked child whose
///          parent has used them.
/// Cost:    a read takes a few loads and a look-up, no lock; the first one after a change takes the
///          store's lock and copies the table of pointers. A write takes as long as the database's
///          commit. A process that stops while it writes holds the others up for 2 s a write, not
///          for good.
class TQ_EXPORT UserDefaults final : public Subclass<UserDefaults> {
 public:
  static constexpr std::string_view className = "UserDefaults";

  /// The application's own store, made on first use.
  [[nodiscard]] static Ref<UserDefaults> standardUserDefaults();
  /// Names the standard store's domain, the program's name otherwise. To be called at start-up: it
  /// changes nothing once the standard store is in use.
  /// @return false for a name that initWithSuiteName() refuses
  static bool setApplicationDomain(std::string_view name);

  /// The store of another domain; none for an empty name, one of more than 200 bytes, with a "/" or
  /// a NUL in it or a "." before it, and for "global".
  [[nodiscard]] static Ref<UserDefaults> initWithSuiteName(std::string_view name);
  /// The same in a folder of one's choice, made when missing.
  [[nodiscard]] static Ref<UserDefaults> initWithSuiteName(std::string_view name,
                                                           std::string_view inFolder);

  /// Puts these into the arguments of this run. @throws as setObject()
  static void setArguments(const Dictionary& arguments);

  /// The value, none when absent.
  [[nodiscard]] Ref<Object> objectForKey(std::string_view key) const;
  /// The same without a count: lent until this thread's next call on any store.
  [[nodiscard]] const Object* peekObjectForKey(std::string_view key) const;

  /// Lenient readings:
  ///
  /// | read    | absent | boolean  | number          | string                  | other |
  /// |---------|--------|----------|-----------------|-------------------------|-------|
  /// | bool    | false  | itself   | whether not 0   | its boolean reading     | false |
  /// | integer | 0      | 1 / 0    | truncated       | its integer reading     | 0     |
  /// | double  | 0      | 1 / 0    | its value       | its double reading      | 0     |
  /// | string  | none   | "1", "0" | its text        | itself                  | none  |
  [[nodiscard]] bool boolForKey(std::string_view key) const;
  [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;
  [[nodiscard]] double doubleForKey(std::string_view key) const;
  [[nodiscard]] Ref<String> stringForKey(std::string_view key) const;

  /// The readings of a value that one has at hand; null is an absent one.
  [[nodiscard]] static bool boolReading(const Object* object) noexcept;
  [[nodiscard]] static std::int64_t integerReading(const Object* object) noexcept;

  /// Stores the value; none removes the entry.
  /// @throws Exception (InvalidArgumentException) for a value that is not a property list and for a
  ///         key that is not text, the store unchanged
  void setObject(const Object* object, std::string_view forKey);
  template <class T>
  void setObject(const Ref<T>& object, std::string_view forKey) {
    setObject(object.get(), forKey);
  }
  void setBool(bool value, std::string_view forKey);
  void setInteger(std::int64_t value, std::string_view forKey);
  void setDouble(double value, std::string_view forKey);
  /// Removes the entry; an absent one is no fault.
  void removeObjectForKey(std::string_view key);

  /// Puts these into the registered defaults, which all stores of the process share; a later value
  /// replaces an earlier one. @throws as setObject()
  void registerDefaults(const Dictionary& defaults);
  /// The same for a single one. @throws as setObject()
  void registerDefault(const Object& value, std::string_view forKey);

  /// All that can be read here, by key.
  [[nodiscard]] Ref<Dictionary> dictionaryRepresentation() const;

  /// Writes what could not be written before. Where somebody has removed the files, what was
  /// written since is written anew; what they held is gone.
  /// @return false, with an error that says why, when it still cannot be
  bool synchronize(Ref<Error>* error = nullptr);

 private:
  using Store = std::shared_ptr<detail::PreferenceStore>;
  enum Level : std::size_t { kArguments, kOwn, kGlobal, kRegistered, kLevels };

  UserDefaults(std::string_view folder, std::string_view name);
  static void setAll(detail::PreferenceStore& store, const Dictionary& entries);

  const std::array<Store, kLevels> levels_;
};

}  // namespace tq
