#pragma once

/// @file Class.h
/// What the library knows of a type: its names and what it can do, found at compile time.

#include <concepts>
#include <string_view>
#include <type_traits>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

class KeyedArchiver;
class KeyedUnarchiver;
class TQJSONDecoder;
class TQJSONEncoder;

/// A type's own part in the JSON archive. A null entry means the default form.
struct JSONCoding {
  /// Makes an object of what the decoder reads.
  Ref<Object> (*initWithJSONDecoder)(TQJSONDecoder&) = nullptr;
  /// Answers what is written in the object's place.
  Ref<Object> (*replacementObject)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the members of a structured object.
  void (*encodeAsJSON)(const Object&, TQJSONEncoder&) = nullptr;
  /// Opens and closes what stands around the members.
  void (*startEncodingObject)(const Object&, TQJSONEncoder&) = nullptr;
  void (*finishEncodingObject)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the member that names the class.
  void (*encodeClassInfo)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the object as an archive within the archive.
  void (*encodeAsRAWArchive)(const Object&, TQJSONEncoder&) = nullptr;
  /// Writes the object where a key is expected.
  void (*encodeAsKey)(const Object&, TQJSONEncoder&) = nullptr;
};

/// A type's own part in keyed archives: both or neither.
struct KeyedCoding {
  /// Puts the object's members into the archiver.
  void (*encodeWithCoder)(const Object&, KeyedArchiver&) = nullptr;
  Ref<Object> (*make)() = nullptr;                             ///< an empty object, to be filled
  bool (*initWithCoder)(Object&, KeyedUnarchiver&) = nullptr;  ///< false: the bytes make no sense
};

/// The record of one class. There is one per type; compare records by address.
///
/// What a type can do follows from the members that it has:
///
/// | member of T | what it gives |
/// |---|---|
/// | `static constexpr std::string_view className` | its name (required) |
/// | `static constexpr std::string_view codingName` | its name in archives, where it differs |
/// | `using CodingClass = U` | archives know it as a U |
/// | `explicit T(TQJSONDecoder&)`, or [1] | it can be read from a JSON archive |
/// | `void encodeAsJSON(TQJSONEncoder&) const` | it is a structured object of a JSON archive |
/// | `Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const` | what is written [2] |
/// | one of [3], each `(TQJSONEncoder&) const` | its own form of that step of an archive |
/// | a default constructor and both of [4] | it can be kept in keyed archives |
///
/// [1] `static Ref<T> initWithJSONDecoder(TQJSONDecoder&)`, which may answer none.
/// [2] None stands for the object itself.
/// [3] `startEncodingObject`, `finishEncodingObject`, `encodeClassInfoForJSON`,
///     `encodeAsRAWArchive`, `encodeAsKey`.
/// [4] `void encodeWithCoder(KeyedArchiver&) const`, `bool initWithCoder(KeyedUnarchiver&)`.
///
/// A derived class inherits what it does not define, but for construction, which is each class's
/// own.
class TQ_EXPORT Class {
 public:
  /// The record of T below Parent, by the members that T has.
  template <class T, class Parent>
  [[nodiscard]] static constexpr Class make() noexcept;

  /// The record of Object itself.
  [[nodiscard]] static constexpr Class makeRoot() noexcept {
    Class root;
    root.name_ = root.codingName_ = "Object";
    return root;
  }

  /// T::className.
  [[nodiscard]] constexpr std::string_view name() const noexcept { return name_; }

  /// The name by which archives and the registry know the class.
  [[nodiscard]] constexpr std::string_view codingName() const noexcept { return codingName_; }

  /// None for Object.
  [[nodiscard]] constexpr const Class* parent() const noexcept { return parent_; }

  /// The record that archives know it under: that of CodingClass where the class names one, else
  /// this one.
  [[nodiscard]] constexpr const Class& classForCoder() const noexcept {
    return codingClass_ != nullptr ? *codingClass_ : *this;
  }

  /// True for the class itself too.
  [[nodiscard]] constexpr bool isSubclassOf(const Class& ancestor) const noexcept {
    for (const Class* c = this; c != nullptr; c = c->parent_) {
      if (c == &ancestor) return true;
    }
    return false;
  }

  /// What the class does in JSON archives, inherited entries included.
  [[nodiscard]] constexpr const JSONCoding& json() const noexcept { return json_; }
  /// What the class does in keyed archives, inherited entries included.
  [[nodiscard]] constexpr const KeyedCoding& keyed() const noexcept { return keyed_; }

  /// True when its objects can be kept in keyed archives.
  [[nodiscard]] constexpr bool supportsKeyedCoding() const noexcept {
    return keyed_.encodeWithCoder != nullptr;
  }

  /// Makes T findable by its coding name. A name registered again names the later class.
  /// Any thread, though start-up is the time for it: what is read before does not know the class.
  template <class T>
  static void registerClass();

  /// The class registered under `codingName`, or null. Exact and case-sensitive. Any thread.
  /// The library's own classes ("NSValue", "NSArray", …) need no registering.
  [[nodiscard]] static const Class* classNamed(std::string_view codingName);

 private:
  constexpr Class() noexcept = default;
  static void registerRecord(const Class& record);

  std::string_view name_;
  std::string_view codingName_;
  const Class* parent_ = nullptr;
  const Class* codingClass_ = nullptr;
  JSONCoding json_;
  KeyedCoding keyed_;
};

namespace detail {

template <class T>
struct RecordOf {
  static constexpr Class make() noexcept { return Class::make<T, typename T::ParentClass>(); }
};

template <>
struct RecordOf<Object> {
  static constexpr Class make() noexcept { return Class::makeRoot(); }
};

}  // namespace detail

/// The record of T. Exported, so that the library and its users see one record of each class.
template <class T>
TQ_EXPORT inline constexpr Class classOf = detail::RecordOf<T>::make();

template <class T, class Parent>
constexpr Class Class::make() noexcept {
  Class record;
  record.name_ = T::className;
  record.parent_ = &classOf<Parent>;

  // A name that T merely inherits is not its own. Texts are compared, for under sanitizers GCC does
  // not take a comparison of addresses for a constant.
  if constexpr (requires { Parent::className; }) {
    static_assert(T::className != Parent::className, "the class lacks a className of its own");
  }
  record.codingName_ = T::className;
  if constexpr (requires { Parent::codingName; }) {
    if (T::codingName != Parent::codingName) record.codingName_ = T::codingName;
  } else if constexpr (requires { T::codingName; }) {
    record.codingName_ = T::codingName;
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
  } else if constexpr (std::is_constructible_v<T, TQJSONDecoder&>) {
    record.json_.initWithJSONDecoder = [](TQJSONDecoder& decoder) -> Ref<Object> {
      return makeRef<T>(decoder);
    };
  } else {
    record.json_.initWithJSONDecoder = nullptr;
  }
/// Fills an entry when T has the member.
#define TQ_JSON_STEP(entry, function, Result)                                         \
  if constexpr (requires(const T& t, TQJSONEncoder& e) { t.function(e); }) {          \
    record.json_.entry = [](const Object& object, TQJSONEncoder& encoder) -> Result { \
      return static_cast<const T&>(object).function(encoder);                         \
    };                                                                                \
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
  }
  return record;
}

template <class T>
void Class::registerClass() {
  registerRecord(classOf<T>);
}

/// Base of every class of objects: `class Shape final : public tq::Subclass<Shape>`, or
/// `Subclass<Circle, Shape>` below another class.
template <class Derived, class Parent = Object>
class TQ_EXPORT Subclass : public Parent {
 public:
  /// The class that this one derives from, for records and constructors.
  using ParentClass = Parent;

  /// The record of Derived.
  [[nodiscard]] const Class& objectClass() const noexcept override { return classOf<Derived>; }

 protected:
  using Parent::Parent;
};

}  // namespace tq
