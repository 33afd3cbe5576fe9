#pragma once

/// @file Class.h
/// Class records: the names and capabilities of a type, found at compile time.

#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

// Classes of higher rooms. A record only has pointers to functions that take them; a class that has
// such functions includes their headers.
class KeyedArchiver;
class KeyedUnarchiver;
class TQJSONDecoder;
class TQJSONEncoder;

/// The functions of a class for JSON archives. A null entry means the default behaviour.
struct JSONCoding {
  /// Creates an object from what the decoder reads.
  Ref<Object> (*initWithJSONDecoder)(TQJSONDecoder&) = nullptr;
  /// Returns the object to write instead of this one.
  Ref<Object> (*replacementObject)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the members of a structured object.
  void (*encodeAsJSON)(const Object&, TQJSONEncoder&) = nullptr;
  /// Write what precedes and follows the members.
  void (*startEncodingObject)(const Object&, TQJSONEncoder&) = nullptr;
  void (*finishEncodingObject)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the member that names the class.
  void (*encodeClassInfo)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the object as an archive within the archive.
  void (*encodeAsRAWArchive)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the object as a key.
  void (*encodeAsKey)(const Object&, TQJSONEncoder&) = nullptr;
};

/// The functions of a class for keyed archives. All or none are null.
struct KeyedCoding {
  /// Writes the object's members to the archiver.
  void (*encodeWithCoder)(const Object&, KeyedArchiver&) = nullptr;
  /// Creates an object without content.
  Ref<Object> (*make)() = nullptr;
  /// Reads the members; returns false if they are invalid.
  bool (*initWithCoder)(Object&, KeyedUnarchiver&) = nullptr;
};

/// The record of one class. There is one per type; compare records by address.
///
/// The members of a type T determine what it can do:
///
/// | member of T | effect |
/// |---|---|
/// | `static constexpr std::string_view className` | its name (required) |
/// | `static constexpr std::string_view codingName` | its name in archives, if it differs |
/// | `using CodingClass = U` | archives know it as a U |
/// | `explicit T(TQJSONDecoder&)`, or [1] | it can be read from a JSON archive |
/// | `void encodeAsJSON(TQJSONEncoder&) const` | it is a structured object of a JSON archive |
/// | `Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const` | written instead [2] |
/// | one of [3], each `(TQJSONEncoder&) const` | replaces that step of writing an archive |
/// | a default constructor and both of [4] | it can be stored in keyed archives |
///
/// [1] `static Ref<T> initWithJSONDecoder(TQJSONDecoder&)`, which may return null.
/// [2] Null means the object itself.
/// [3] `startEncodingObject`, `finishEncodingObject`, `encodeClassInfoForJSON`,
///     `encodeAsRAWArchive`, `encodeAsKey`.
/// [4] `void encodeWithCoder(KeyedArchiver&) const`, `bool initWithCoder(KeyedUnarchiver&)`.
///
/// A derived class inherits what it does not define, except construction from an archive.
///
/// Mistakes that would lose data do not compile: a step that is not const, or that is not public
/// although a parent has one; a class that does not define its own name; a name that is not plain
/// (see isPlainName()).
class TQ_EXPORT Class {
 public:
  /// Makes the record of T below Parent from the members of T.
  template <class T, class Parent>
  [[nodiscard]] static consteval Class make() noexcept;

  /// Makes the record of Object.
  [[nodiscard]] static consteval Class makeRoot() noexcept {
    Class root;
    root.name_ = root.codingName_ = "Object";
    return root;
  }

  /// T::className.
  [[nodiscard]] constexpr std::string_view name() const noexcept { return name_; }

  /// The name by which archives and the registry know the class.
  [[nodiscard]] constexpr std::string_view codingName() const noexcept { return codingName_; }

  /// The record of the parent class; null for Object.
  [[nodiscard]] constexpr const Class* parent() const noexcept { return parent_; }

  /// The record that archives use: the one of CodingClass if the class defines it, else this one.
  [[nodiscard]] constexpr const Class& classForCoder() const noexcept {
    return codingClass_ != nullptr ? *codingClass_ : *this;
  }

  /// True if `ancestor` is this class or one above it.
  [[nodiscard]] constexpr bool isSubclassOf(const Class& ancestor) const noexcept {
    for (const Class* c = this; c != nullptr; c = c->parent_) {
      if (c == &ancestor) return true;
    }
    return false;
  }

  /// The functions for JSON archives, including inherited ones.
  [[nodiscard]] constexpr const JSONCoding& json() const noexcept { return json_; }
  /// The functions for keyed archives, including inherited ones.
  [[nodiscard]] constexpr const KeyedCoding& keyed() const noexcept { return keyed_; }

  /// True for the value classes of the library, which archives may name without registration.
  [[nodiscard]] bool isLibraryClass() const noexcept;

  /// True if archives can hold the name: it is well-formed UTF-8, not empty, and has no quotation
  /// mark, backslash or character below U+0020.
  [[nodiscard]] static constexpr bool isPlainName(std::string_view name) noexcept {
    for (std::size_t i = 0; i < name.size();) {
      const unsigned lead = static_cast<unsigned char>(name[i]);
      if (lead == '"' || lead == '\\' || lead < ' ') return false;
      const std::size_t count = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      if (count > name.size() - i || (lead >= 0x80 && lead < 0xC2) || lead > 0xF4) return false;
      for (std::size_t j = 1; j < count; ++j) {
        const unsigned byte = static_cast<unsigned char>(name[i + j]);
        // The second byte excludes long forms, surrogates and values above U+10FFFF.
        const unsigned least = j > 1 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned most = j > 1 ? 0xBF : lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        if (byte < least || byte > most) return false;
      }
      i += count;
    }
    return !name.empty();
  }

  /// True if keyed archives can store objects of the class.
  [[nodiscard]] constexpr bool supportsKeyedCoding() const noexcept {
    return keyed_.encodeWithCoder != nullptr;
  }

  /// Registers T under its coding name, so that archives can find it. Registering T again has no
  /// effect; a name that belongs to another class, or to one of the library, stops the process. Any
  /// thread; register at start-up, before archives are read.
  template <class T>
  static void registerClass();

  /// Removes T from the registry, if it is registered: archives no longer find it. For plug-ins
  /// that unload; see "Unloading a plug-in" in docs/Objects.md. A class of the library stops the
  /// process. Any thread.
  template <class T>
  static void unregisterClass();

  /// Returns the class registered under `codingName`, or null. Case-sensitive. Any thread. The
  /// library's own classes ("NSValue", "NSArray", …) are always registered.
  [[nodiscard]] static const Class* classNamed(std::string_view codingName);

 private:
  constexpr Class() noexcept = default;
  static void registerRecord(const Class& record);
  static void unregisterRecord(const Class& record);

  std::string_view name_;
  std::string_view codingName_;
  const Class* parent_ = nullptr;
  const Class* codingClass_ = nullptr;
  JSONCoding json_;
  KeyedCoding keyed_;
};

namespace detail {

/// Stands for a decoder when constructors are examined. It converts to nothing else: a decoder also
/// converts to Object, so that T(const Object&) would look like a constructor from a decoder.
/// A class that cannot be constructed from an Object may do with a decoder what it likes.
struct DecoderProbe {
  DecoderProbe(const DecoderProbe&) = delete;
  template <class T>
  requires std::same_as<std::remove_const_t<T>, TQJSONDecoder>
  operator T&() const noexcept;  // NOLINT: a decoder converts to a reference without a cast
};

template <class T>
struct RecordOf {
  static consteval Class make() noexcept { return Class::make<T, typename T::ParentClass>(); }
};

template <>
struct RecordOf<Object> {
  static consteval Class make() noexcept { return Class::makeRoot(); }
};

}  // namespace detail

/// The record of T. Exported, so that the library and its users share one record per class.
template <class T>
TQ_EXPORT inline constexpr Class classOf = detail::RecordOf<T>::make();

template <class T, class Parent>
consteval Class Class::make() noexcept {
  Class record;
  record.name_ = T::className;
  record.parent_ = &classOf<Parent>;

  // An inherited name does not count. The texts are compared, because with sanitizers GCC does not
  // accept a comparison of addresses as a constant.
  if constexpr (requires { Parent::className; }) {
    static_assert(T::className != Parent::className, "the class must define its own className");
  }
  record.codingName_ = T::className;
  if constexpr (requires { Parent::codingName; }) {
    if (T::codingName != Parent::codingName) record.codingName_ = T::codingName;
  } else if constexpr (requires { T::codingName; }) {
    record.codingName_ = T::codingName;
  }
  static_assert(
      isPlainName(T::className),
      "className must be plain: UTF-8 without quotation mark, backslash and control character");
  if constexpr (requires { T::codingName; }) {
    static_assert(
        isPlainName(T::codingName),
        "codingName must be plain: UTF-8 without quotation mark, backslash and control character");
  }
  if constexpr (requires { typename T::CodingClass; }) {
    record.codingClass_ = &classOf<typename T::CodingClass>;
  }

  const JSONCoding inherited = record.parent_->json_;
  record.json_ = inherited;
  if constexpr (requires(TQJSONDecoder & d) {
                  { T::initWithJSONDecoder(d) } -> std::convertible_to<Ref<T>>;
                }) {
    record.json_.initWithJSONDecoder = [](TQJSONDecoder& decoder) -> Ref<Object> {
      return T::initWithJSONDecoder(decoder);
    };
  } else if constexpr (std::is_constructible_v<T, const detail::DecoderProbe&> ||
                       (std::is_constructible_v<T, TQJSONDecoder&> &&
                        !std::is_constructible_v<T, const Object&>)) {
    record.json_.initWithJSONDecoder = [](TQJSONDecoder& decoder) -> Ref<Object> {
      return makeRef<T>(decoder);
    };
  } else {
    record.json_.initWithJSONDecoder = nullptr;
  }
/// Sets an entry if T has the member. A member that cannot be called does not compile, because the
/// parent's would be used instead of it.
#define TQ_JSON_STEP(entry, function, Result)                                                \
  if constexpr (requires(const T& t, TQJSONEncoder& e) { t.function(e); }) {                 \
    record.json_.entry = [](const Object& object, TQJSONEncoder& encoder) -> Result {        \
      return static_cast<const T&>(object).function(encoder);                                \
    };                                                                                       \
  } else {                                                                                   \
    static_assert(                                                                           \
        !requires(T & t, TQJSONEncoder & e) { t.function(e); } &&                            \
            !requires(const Parent& p, TQJSONEncoder& e) { p.function(e); },                 \
        "declare it public and const: " #Result " " #function "(tq::TQJSONEncoder&) const"); \
  }
  TQ_JSON_STEP(replacementObject, replacementObjectForJSONEncoder, Ref<Object>)
  TQ_JSON_STEP(encodeAsJSON, encodeAsJSON, void)
  TQ_JSON_STEP(startEncodingObject, startEncodingObject, void)
  TQ_JSON_STEP(finishEncodingObject, finishEncodingObject, void)
  TQ_JSON_STEP(encodeClassInfo, encodeClassInfoForJSON, void)
  TQ_JSON_STEP(encodeAsRAWArchive, encodeAsRAWArchive, void)
  TQ_JSON_STEP(encodeAsKey, encodeAsKey, void)
#undef TQ_JSON_STEP

  if constexpr (std::is_default_constructible_v<T> &&
                requires(T & t, const T& c, KeyedArchiver& archiver, KeyedUnarchiver& unarchiver) {
                  c.encodeWithCoder(archiver);
                  { t.initWithCoder(unarchiver) } -> std::same_as<bool>;
                }) {
    record.keyed_.encodeWithCoder = [](const Object& object, KeyedArchiver& archiver) {
      static_cast<const T&>(object).encodeWithCoder(archiver);
    };
    record.keyed_.make = []() -> Ref<Object> { return makeRef<T>(); };
    record.keyed_.initWithCoder = [](Object& object, KeyedUnarchiver& unarchiver) {
      return static_cast<T&>(object).initWithCoder(unarchiver);
    };
  } else if constexpr (requires(T & t, KeyedArchiver & archiver) { t.encodeWithCoder(archiver); }) {
    static_assert(
        requires(const T& t, KeyedArchiver& archiver) { t.encodeWithCoder(archiver); },
        "declare it public and const: void encodeWithCoder(tq::KeyedArchiver&) const");
  }
  return record;
}

template <class T>
void Class::registerClass() {
  static_assert(std::same_as<T, typename T::ThisClass>,
                "derive the class from Subclass: class T : public tq::Subclass<T, Parent>");
  registerRecord(classOf<T>);
}

template <class T>
void Class::unregisterClass() {
  unregisterRecord(classOf<T>);
}

/// Base of all object classes: `class Shape final : public tq::Subclass<Shape>`, or
/// `Subclass<Circle, Shape>` below another class.
template <class Derived, class Parent = Object>
class TQ_EXPORT Subclass : public Parent {
 public:
  /// The class itself. A class derived from it without Subclass keeps its record, and so its name.
  using ThisClass = Derived;
  /// The class that this one derives from.
  using ParentClass = Parent;

  /// The record of Derived.
  [[nodiscard]] const Class& objectClass() const noexcept override { return classOf<Derived>; }

 protected:
  using Parent::Parent;
};

}  // namespace tq
