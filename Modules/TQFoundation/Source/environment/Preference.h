#pragma once

/// @file Preference.h
/// Typed handles on single preferences.

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

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

/// bool, long and long long.
template <class T>
concept ReadLeniently = std::same_as<T, bool> ||
    (std::signed_integral<T> && sizeof(T) == sizeof(std::int64_t));

}  // namespace detail

/// How a type is stored as a raw value. To be specialised with
///
///     using RawValue = …;  // bool, an integer, double, std::string, or a Ref to a String, Number,
///                          // Date, Data, Array or Dictionary
///     static std::optional<T> fromRawValue(const RawValue&);  // none: no case has this value
///     static RawValue rawValue(const T&);
///
/// For an enumeration whose cases are stored as their numbers:
/// `template <> struct tq::RawRepresentable<Unit> : tq::RawCases<Unit::mm, Unit::pt> {};`
template <class T>
struct RawRepresentable;

/// RawRepresentable for an enumeration with these cases and no others.
template <auto First, decltype(First)... Others>
struct RawCases {
  /// Cases are stored as their numbers.
  using RawValue = std::int64_t;
  /// The case with this number; none when no case has it.
  static std::optional<decltype(First)> fromRawValue(RawValue raw) noexcept {
    for (const auto known : {First, Others...}) {
      if (rawValue(known) == raw) return known;
    }
    return std::nullopt;
  }
  /// The case's number.
  static RawValue rawValue(decltype(First) value) noexcept { return static_cast<RawValue>(value); }
};

/// Numbers, texts and property lists are stored as they are. A null Ref is no value: storing it
/// removes the entry.
template <class T>
requires(std::is_arithmetic_v<T> ||
         detail::OneOf<T, std::string, Ref<String>, Ref<Number>, Ref<Date>, Ref<Data>, Ref<Array>,
                       Ref<Dictionary>>) struct RawRepresentable<T> {
  /// The value itself.
  using RawValue = T;
  /// Never none.
  static std::optional<T> fromRawValue(const T& raw) { return raw; }
  /// The value itself, lent.
  static const T& rawValue(const T& value) noexcept { return value; }
};

namespace detail {

/// Raw values as objects and back. A number becomes the number asked for only when that holds it
/// exactly; everything else must be of the type itself.
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
  /// `value` as a Raw, when that converts back to it.
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

  /// Whether a floating number is in the range of an integer type: converting it is undefined
  /// otherwise. 2 to the power of the type's bits, behind that range, is exact in each of them.
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
    Ref<String> text = String::stringWithGeneralisedUTF8(raw);  // as unbox() gives it
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
    return Ref<O>(const_cast<O*>(raw));  // immutable, like all that comes from a store
  }
};

}  // namespace detail

/// What the forms of Preference share: the entry, by its key, of a store.
class TQ_EXPORT PreferenceEntry {
 public:
  /// Under which the value is stored.
  [[nodiscard]] const std::string& key() const noexcept { return key_; }
  /// The standard store unless another was given. Looked for at first use, so that preferences may
  /// be declared as constants.
  [[nodiscard]] UserDefaults& userDefaults() const {
    if (userDefaults_ != nullptr) return *userDefaults_;
    static UserDefaults& standard = *UserDefaults::standardUserDefaults().leak();
    return standard;
  }

  /// Removes the entry; a default registered for it then shows.
  void removeValue() const { userDefaults().removeObjectForKey(key_); }

 protected:
  /// An entry of `userDefaults`; of the standard store when that is none.
  PreferenceEntry(std::string key, Ref<UserDefaults> userDefaults)
      : key_(std::move(key)), userDefaults_(std::move(userDefaults)) {}

  /// Stores the value under the key; none removes it.
  void store(const Ref<Object>& value) const { userDefaults().setObject(value, key_); }
  /// Registers a default with the store; none is no default. It shows wherever the store has
  /// nothing of its own.
  void registerObject(const Ref<Object>& value) const {
    if (value != nullptr) userDefaults().registerDefault(*value, key_);
  }

 private:
  std::string key_;
  Ref<UserDefaults> userDefaults_;
};

/// One preference: a key, a default and a store. Nothing is kept here: every read goes to the
/// store, which answers a default registered with it before this preference's own. Any thread.
///
/// This form is of a type that is stored as a raw value (see RawRepresentable): an entry that is
/// not of the raw type, or that no case has, reads as the default.
template <class T>
class Preference : public PreferenceEntry {
 public:
  /// What the store holds.
  using RawValue = typename RawRepresentable<T>::RawValue;

  /// @param defaultValue  read while the store has nothing that makes sense
  /// @param userDefaults  the store; none: the standard one, found at first use
  Preference(std::string key, T defaultValue, Ref<UserDefaults> userDefaults = nullptr)
      : PreferenceEntry(std::move(key), std::move(userDefaults)),
        defaultValue_(std::move(defaultValue)) {}

  /// As given.
  [[nodiscard]] const T& defaultValue() const noexcept { return defaultValue_; }

  /// The stored value, or the default.
  [[nodiscard]] T value() const {
    if (const auto raw = rawValue()) {
      if (auto value = RawRepresentable<T>::fromRawValue(*raw)) return *std::move(value);
    }
    return defaultValue_;
  }
  /// Stores the value.
  void setValue(const T& value) const { setRawValue(RawRepresentable<T>::rawValue(value)); }
  /// None removes the entry.
  void set(const std::optional<T>& value) const { value ? setValue(*value) : removeValue(); }

  /// The stored raw value, be it one that no case has; none for an entry of another type.
  [[nodiscard]] std::optional<RawValue> rawValue() const {
    const Object* const object = userDefaults().peekObjectForKey(key());
    if (object == nullptr) return std::nullopt;
    return detail::RawObject<RawValue>::unbox(*object);
  }
  void setRawValue(const std::optional<RawValue>& raw) const {
    raw ? store(detail::RawObject<RawValue>::box(*raw)) : removeValue();
  }

  /// Registers the default with the store, for readers that do not know this preference.
  void registerDefault() const {
    registerObject(detail::RawObject<RawValue>::box(RawRepresentable<T>::rawValue(defaultValue_)));
  }

 private:
  T defaultValue_;
};

/// Booleans and 64-bit integers: an absent entry reads as the default, one of another type by the
/// store's lenient reading.
template <class T>
requires(detail::ReadLeniently<T>) class Preference<T> : public PreferenceEntry {
 public:
  /// @param userDefaults  the store; none: the standard one, found at first use
  explicit Preference(std::string key, T defaultValue = {},
                      Ref<UserDefaults> userDefaults = nullptr)
      : PreferenceEntry(std::move(key), std::move(userDefaults)), defaultValue_(defaultValue) {}

  /// As given.
  [[nodiscard]] T defaultValue() const noexcept { return defaultValue_; }

  /// The stored value, or the default.
  [[nodiscard]] T value() const {
    const Object* const object = userDefaults().peekObjectForKey(key());
    if (object == nullptr) return defaultValue_;
    if constexpr (std::same_as<T, bool>) return UserDefaults::boolReading(object);
    return static_cast<T>(UserDefaults::integerReading(object));
  }
  /// Stores the value.
  void setValue(T value) const { store(Number::numberWith(value)); }
  /// None removes the entry.
  void set(std::optional<T> value) const { value ? setValue(*value) : removeValue(); }

  /// Registers the default with the store, for readers that do not know this preference.
  void registerDefault() const { registerObject(Number::numberWith(defaultValue_)); }

 private:
  T defaultValue_;
};

}  // namespace tq
