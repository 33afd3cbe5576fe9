#pragma once

/// @file Preference.h
/// Typed access to single preferences.

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>

namespace tq {
namespace detail {

template <class T, class... Types>
concept OneOf = (std::same_as<T, Types> || ...);

/// The types bool, long and long long.
template <class T>
concept ReadLeniently = std::same_as<T, bool> ||
    (std::signed_integral<T> && sizeof(T) == sizeof(std::int64_t));

/// std::filesystem::path, recognised by its members, because its header takes long to compile.
template <class T>
concept FilePath = requires(const T& path) {
  T::preferred_separator;
  path.root_directory();
  { path.native() } -> std::same_as<const std::string&>;
};

}  // namespace detail

/// How a type is stored as a raw value. Specialise it with
///
///     using RawValue = …;  // bool, an integer, double, std::string, or a Ref to a String, Number,
///                          // Date, Data, Array or Dictionary
///     static std::optional<T> fromRawValue(const RawValue&);  // nullopt: no such value
///     static RawValue rawValue(const T&);
///
/// For an enumeration whose cases are stored as their numbers:
/// `template <> struct tq::RawRepresentable<Unit> : tq::RawCases<Unit::mm, Unit::pt> {};`
template <class T>
struct RawRepresentable;

/// RawRepresentable for an enumeration that has exactly these cases.
template <auto First, decltype(First)... Others>
struct RawCases {
  /// Cases are stored as their numbers.
  using RawValue = std::int64_t;
  /// Returns the case with this number, or nullopt.
  static std::optional<decltype(First)> fromRawValue(RawValue raw) noexcept {
    for (const auto known : {First, Others...}) {
      if (rawValue(known) == raw) return known;
    }
    return std::nullopt;
  }
  /// Returns the number of the case.
  static RawValue rawValue(decltype(First) value) noexcept { return static_cast<RawValue>(value); }
};

/// Numbers, strings and property lists are stored as they are. Storing a null Ref removes the
/// entry.
template <class T>
requires(std::is_arithmetic_v<T> ||
         detail::OneOf<T, std::string, Ref<String>, Ref<Number>, Ref<Date>, Ref<Data>, Ref<Array>,
                       Ref<Dictionary>>) struct RawRepresentable<T> {
  /// The type itself.
  using RawValue = T;
  /// Returns the value, never nullopt.
  static std::optional<T> fromRawValue(const T& raw) { return raw; }
  /// Returns its argument.
  static const T& rawValue(const T& value) noexcept { return value; }
};

namespace detail {

/// Converts raw values to objects and back. A stored number converts only if the requested type
/// represents it exactly. All other objects must have the requested type.
template <class Raw>
struct RawObject;

template <class Raw>
requires std::is_arithmetic_v<Raw>
struct RawObject<Raw> {
  static Ref<Object> box(Raw raw) { return Number::numberWith(raw); }
  static std::optional<Raw> unbox(const Object& object) {
    if (object.kind() != ObjectKind::number) return std::nullopt;
    const NumberValue number = static_cast<const Number&>(object).value();
    if constexpr (std::same_as<Raw, bool>) {
      const bool raw = number.boolValue();
      return number.doubleValue() == raw ? std::optional(raw) : std::nullopt;
    } else {
      if (number.isFloating()) return exactly(number.doubleValue());
      return number.kind() == NumberKind::uint64 ? exactly(number.bits())
                                                 : exactly(number.integerValue());
    }
  }

 private:
  /// Returns `value` as a Raw if the conversion is exact.
  template <class From>
  static std::optional<Raw> exactly(From value) noexcept {
    if constexpr (std::integral<Raw> && std::integral<From>) {
      return std::in_range<Raw>(value) ? std::optional(static_cast<Raw>(value)) : std::nullopt;
    } else {
      if (!isWithin<Raw>(value)) return std::nullopt;
      const Raw raw = static_cast<Raw>(value);
      const bool isExact = isWithin<From>(raw) && static_cast<From>(raw) == value;
      return isExact || value != value ? std::optional(raw) : std::nullopt;
    }
  }

  /// True if a floating-point number is in the range of an integer type; otherwise the conversion
  /// is undefined. The upper bound max() + 1 is a power of two, exact in every floating-point type.
  template <class To, class From>
  static bool isWithin(From value) noexcept {
    if constexpr (std::integral<To> && std::floating_point<From>) {
      using Limits = std::numeric_limits<To>;
      return value >= static_cast<From>(Limits::min()) &&
             value < 2 * static_cast<From>(Limits::max() / 2 + 1);
    } else {
      return true;
    }
  }
};

template <>
struct RawObject<std::string> {
  static Ref<Object> box(const std::string& raw) {
    Ref<String> text = String::stringWithGeneralisedUTF8(raw);  // as unbox() returns it
    if (text == nullptr) {
      throw Exception(InvalidArgumentException, "Attempt to store a raw value that is not text");
    }
    return text;
  }
  static std::optional<std::string> unbox(const Object& object) {
    if (object.kind() != ObjectKind::string) return std::nullopt;
    return std::string(static_cast<const String&>(object).view());
  }
};

template <class O>
struct RawObject<Ref<O>> {
  static Ref<Object> box(const Ref<O>& raw) { return raw; }
  static std::optional<Ref<O>> unbox(const Object& object) {
    const O* const raw = objectCast<O>(&object);
    if (raw == nullptr) return std::nullopt;
    return Ref<O>(const_cast<O*>(raw));  // objects of a store are immutable
  }
};

}  // namespace detail

/// Paths (std::filesystem::path) are stored as data: file names are bytes, and not always text.
template <detail::FilePath Path>
struct RawRepresentable<Path> {
  /// The bytes of the path.
  using RawValue = Ref<Data>;
  /// Returns the path, never nullopt.
  static std::optional<Path> fromRawValue(const RawValue& raw) { return Path(raw->view()); }
  /// Returns the bytes of the path.
  static RawValue rawValue(const Path& path) { return Data::dataWithBytes(path.native()); }
};

/// Lists are stored as arrays, with each element as it is stored alone. A null Ref in a list is an
/// InvalidArgumentException.
template <class T>
struct RawRepresentable<std::vector<T>> {
  /// An array of the elements' raw values.
  using RawValue = Ref<Array>;
  /// Returns the elements, never nullopt. Those that are not stored as a T are left out.
  static std::optional<std::vector<T>> fromRawValue(const RawValue& raw) {
    std::vector<T> list;
    for (const Object& object : *raw) {
      const auto element = detail::RawObject<typename RawRepresentable<T>::RawValue>::unbox(object);
      if (!element) continue;
      if (auto value = RawRepresentable<T>::fromRawValue(*element))
        list.push_back(*std::move(value));
    }
    return list;
  }
  /// Returns an array of the elements' raw values.
  static RawValue rawValue(const std::vector<T>& list) {
    std::vector<Ref<Object>> elements;
    for (const auto& element : list) {
      elements.push_back(detail::RawObject<typename RawRepresentable<T>::RawValue>::box(
          RawRepresentable<T>::rawValue(element)));
    }
    return Array::arrayWithObjects(std::move(elements));
  }
};

/// The entry of a preference in a store: the common base of all Preference types.
class TQ_EXPORT PreferenceEntry {
 public:
  /// Returns the key of the entry.
  [[nodiscard]] const std::string& key() const noexcept { return key_; }
  /// Returns the store. By default this is the standard store, which is opened at the first use, so
  /// that preferences may be declared as constants.
  [[nodiscard]] UserDefaults& userDefaults() const {
    if (userDefaults_ != nullptr) return *userDefaults_;
    static UserDefaults& standard = *UserDefaults::standardUserDefaults().leak();
    return standard;
  }

  /// Removes the entry. The next read returns a default registered with the store, if there is one.
  void removeValue() const { userDefaults().removeObjectForKey(key_); }

 protected:
  /// An entry of `userDefaults`, or of the standard store if that is null.
  PreferenceEntry(std::string key, Ref<UserDefaults> userDefaults)
      : key_(std::move(key)), userDefaults_(std::move(userDefaults)) {}

  /// Stores the value under the key. Null removes the entry.
  void store(const Ref<Object>& value) const { userDefaults().setObject(value, key_); }
  /// Registers a default with the store, which returns it if it has no entry. Null is ignored.
  void registerObject(const Ref<Object>& value) const {
    if (value != nullptr) userDefaults().registerDefault(*value, key_);
  }
  /// Calls the handler after the entry has changed.
  [[nodiscard]] Ref<PreferenceObservation> observeEntry(std::function<void()> handler) const {
    return userDefaults().observeChanges(
        [key = key_, handler = std::move(handler)](std::span<const std::string> keys) {
          if (std::ranges::binary_search(keys, key)) handler();
        });
  }

 private:
  std::string key_;
  Ref<UserDefaults> userDefaults_;
};

/// One preference: a key, a default and a store. Every read goes to the store. A default registered
/// with the store takes precedence over the default of this object. Threads: any.
///
/// This is the general form, for types with a raw value (see RawRepresentable). If the entry does
/// not have the raw type, or has no corresponding value, a read returns the default.
template <class T>
class Preference : public PreferenceEntry {
 public:
  /// The type in the store.
  using RawValue = typename RawRepresentable<T>::RawValue;

  /// @param defaultValue  returned if the store has no valid entry
  /// @param userDefaults  the store; null means the standard store
  Preference(std::string key, T defaultValue, Ref<UserDefaults> userDefaults = nullptr)
      : PreferenceEntry(std::move(key), std::move(userDefaults)),
        defaultValue_(std::move(defaultValue)) {}

  /// Returns the default of this object.
  [[nodiscard]] const T& defaultValue() const noexcept { return defaultValue_; }

  /// Returns the stored value, or the default.
  [[nodiscard]] T value() const {
    if (const auto raw = rawValue()) {
      if (auto value = RawRepresentable<T>::fromRawValue(*raw)) return *std::move(value);
    }
    return defaultValue_;
  }
  /// Stores the value.
  void setValue(const T& value) const { setRawValue(RawRepresentable<T>::rawValue(value)); }
  /// Stores the value. nullopt removes the entry.
  void set(const std::optional<T>& value) const { value ? setValue(*value) : removeValue(); }

  /// The stored raw value, even if no value of T corresponds to it. nullopt if there is no entry of
  /// this type.
  [[nodiscard]] std::optional<RawValue> rawValue() const {
    const Object* const object = userDefaults().peekObjectForKey(key());
    if (object == nullptr) return std::nullopt;
    return detail::RawObject<RawValue>::unbox(*object);
  }
  void setRawValue(const std::optional<RawValue>& raw) const {
    raw ? store(detail::RawObject<RawValue>::box(*raw)) : removeValue();
  }

  /// Calls the handler with the new value after this process or another one has changed it, on the
  /// run loop of the calling thread. See PreferenceObservation.
  /// @return the observation, which ends when it is released
  [[nodiscard]] Ref<PreferenceObservation> observe(std::function<void(const T&)> handler) const {
    return observeEntry([self = *this, handler = std::move(handler)] { handler(self.value()); });
  }

  /// Registers the default with the store, for code that reads the store directly.
  void registerDefault() const {
    registerObject(detail::RawObject<RawValue>::box(RawRepresentable<T>::rawValue(defaultValue_)));
  }

 private:
  T defaultValue_;
};

/// The form for booleans and 64-bit integers. If there is no entry, a read returns the default. An
/// entry of another type is converted leniently, see UserDefaults.
template <class T>
requires(detail::ReadLeniently<T>) class Preference<T> : public PreferenceEntry {
 public:
  /// @param userDefaults  the store; null means the standard store
  explicit Preference(std::string key, T defaultValue = {},
                      Ref<UserDefaults> userDefaults = nullptr)
      : PreferenceEntry(std::move(key), std::move(userDefaults)), defaultValue_(defaultValue) {}

  /// Returns the default of this object.
  [[nodiscard]] T defaultValue() const noexcept { return defaultValue_; }

  /// Returns the stored value, or the default.
  [[nodiscard]] T value() const {
    const Object* const object = userDefaults().peekObjectForKey(key());
    if (object == nullptr) return defaultValue_;
    if constexpr (std::same_as<T, bool>) return UserDefaults::boolReading(object);
    return static_cast<T>(UserDefaults::integerReading(object));
  }
  /// Stores the value.
  void setValue(T value) const { store(Number::numberWith(value)); }
  /// Stores the value. nullopt removes the entry.
  void set(std::optional<T> value) const { value ? setValue(*value) : removeValue(); }

  /// Calls the handler with the new value after this process or another one has changed it, on the
  /// run loop of the calling thread. See PreferenceObservation.
  /// @return the observation, which ends when it is released
  [[nodiscard]] Ref<PreferenceObservation> observe(std::function<void(T)> handler) const {
    return observeEntry([self = *this, handler = std::move(handler)] { handler(self.value()); });
  }

  /// Registers the default with the store, for code that reads the store directly.
  void registerDefault() const { registerObject(Number::numberWith(defaultValue_)); }

 private:
  T defaultValue_;
};

}  // namespace tq
